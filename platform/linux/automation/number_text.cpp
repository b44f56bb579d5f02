// Numbers as texts.
#include "platform/linux/automation/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zr {
namespace {

constexpr int kBufferSize = 48;

BSTR allocateText(const char* first, const char* last) {
    OLECHAR text[kBufferSize];
    OLECHAR* const end = std::transform(
        first, last, text, [](char c) { return static_cast<OLECHAR>(c == 'e' ? 'E' : c); });
    return SysAllocStringLen(text, static_cast<UINT>(end - text));
}

char* putInteger(char* at, bool negative, ULONGLONG magnitude) {
    if (negative) {
        *at++ = '-';
    }
    return std::to_chars(at, at + kBufferSize / 2, magnitude).ptr;
}

}  // namespace

BSTR textOfInteger(bool negative, ULONGLONG magnitude) {
    char text[kBufferSize];
    return allocateText(text, putInteger(text, negative, magnitude));
}

BSTR textOfReal(double value, int digits) {
    if (std::isnan(value)) {
        return SysAllocString(OLESTR("NAN"));
    }
    if (std::isinf(value)) {
        return SysAllocString(value < 0 ? OLESTR("-INF") : OLESTR("INF"));
    }
    char text[kBufferSize];
    // Adding 0.0 turns -0.0 into 0.0.
    const auto result =
        std::to_chars(text, text + kBufferSize, value + 0.0, std::chars_format::general, digits);
    return allocateText(text, result.ptr);
}

BSTR textOfCurrency(LONGLONG tenThousandths) {
    const bool negative = tenThousandths < 0;
    const ULONGLONG magnitude = negative ? 0 - static_cast<ULONGLONG>(tenThousandths)
                                         : static_cast<ULONGLONG>(tenThousandths);
    char text[kBufferSize];
    char* end = putInteger(text, negative, magnitude / 10000);
    auto fraction = static_cast<unsigned>(magnitude % 10000);
    if (fraction != 0) {
        *end++ = '.';
        for (unsigned unit = 1000; fraction != 0; unit /= 10) {
            *end++ = static_cast<char>('0' + fraction / unit);
            fraction %= unit;
        }
    }
    return allocateText(text, end);
}

}  // namespace zr
