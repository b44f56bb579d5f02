// Conversion between UTF-8 and UTF-16, with the results of Windows for invalid input and small
// buffers.
#include "platform/linux/kernel.h"

#include <utf8.h>

#include <algorithm>
#include <climits>
#include <string>
#include <type_traits>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// The output of one conversion: fills a buffer, or only counts when there is none.
template <class Unit>
class Output {
public:
    Output(Unit* target, int size) : m_target(target), m_size(static_cast<std::size_t>(size)) {}

    bool counting() const { return m_size == 0; }
    std::size_t room() const { return counting() ? SIZE_MAX : m_size - m_used; }
    void put(Unit unit) {
        if (!counting()) {
            m_target[m_used] = unit;
        }
        ++m_used;
    }
    int result() const { return m_used > INT_MAX ? 0 : static_cast<int>(m_used); }

private:
    Unit* m_target;
    std::size_t m_size;
    std::size_t m_used = 0;
};

std::size_t sequenceLength(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 1;
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The end of the invalid sequence at start, which one replacement character stands for. A sequence
// whose lead byte needs more bytes than are left extends to the end. Any other sequence ends
// before the first byte that is no continuation, or after a second byte that makes the value
// invalid.
const char* skipInvalid(const char* start, const char* end) {
    const std::size_t length = sequenceLength(static_cast<unsigned char>(*start));
    if (length > static_cast<std::size_t>(end - start)) {
        return end;
    }
    const char* next = start + 1;
    if (length > 1 && isContinuation(*next)) {
        ++next;
        const auto lead = static_cast<unsigned char>(start[0]);
        const auto second = static_cast<unsigned char>(start[1]);
        const bool valid = !(lead == 0xF0 && second < 0x90) && !(lead == 0xF4 && second >= 0x90);
        if (valid && length == 4 && isContinuation(*next)) {
            ++next;
        }
    }
    return next;
}

// Converts ASCII characters, which are one unit in both encodings. Returns false when the target is
// too small.
template <class From, class To>
bool putAscii(const From** source, const From* end, Output<To>* output) {
    for (; *source != end && static_cast<std::make_unsigned_t<From>>(**source) < 0x80; ++*source) {
        if (output->room() == 0) {
            return false;
        }
        output->put(static_cast<To>(**source));
    }
    return true;
}

// Returns false when the target is too small. As on Windows, a surrogate pair at the end of the
// input is cut when there is room for one unit.
bool putUtf16(char32_t codePoint, bool last, Output<WCHAR>* output) {
    if (output->room() == 0) {
        return false;
    }
    if (codePoint <= 0xFFFF) {
        output->put(static_cast<WCHAR>(codePoint));
        return true;
    }
    output->put(static_cast<WCHAR>(0xD7C0 + (codePoint >> 10)));
    if (output->room() == 0) {
        return last;
    }
    output->put(static_cast<WCHAR>(0xDC00 + (codePoint & 0x3FF)));
    return true;
}

char32_t nextCodePoint(LPCWCH* source, LPCWCH end, bool* invalid) {
    const char32_t unit = *(*source)++;
    if (unit < 0xD800 || unit > 0xDFFF) {
        return unit;
    }
    if (unit < 0xDC00 && *source != end && **source >= 0xDC00 && **source <= 0xDFFF) {
        return ((unit - 0xD7C0) << 10) + (*(*source)++ & 0x3FFu);
    }
    *invalid = true;
    return kReplacement;
}

template <class Unit>
std::size_t sourceLength(const Unit* source, int length) {
    return length < 0 ? std::char_traits<Unit>::length(source) + 1
                      : static_cast<std::size_t>(length);
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int length, WCHAR* target,
                        int size) {
    if (codePage != CP_UTF8 || (flags & ~MB_ERR_INVALID_CHARS) != 0 || !source || length == 0 ||
        size < 0 || (size > 0 && !target)) {
        return 0;
    }
    const char* const end = source + sourceLength(source, length);
    // The terminator is converted separately: terminated input gives terminated output, even after
    // an incomplete sequence.
    const bool isTerminated = end[-1] == '\0';
    const char* const textEnd = isTerminated ? end - 1 : end;
    Output<WCHAR> output(target, size);
    bool invalid = false;
    while (putAscii(&source, textEnd, &output) && source != textEnd) {
        const char* const valid = utf8::find_invalid(source, textEnd);
        while (source != valid) {
            const char32_t codePoint = utf8::unchecked::next(source);
            if (!putUtf16(codePoint, source == end, &output)) {
                return 0;
            }
        }
        if (source != textEnd) {
            invalid = true;
            source = std::min(skipInvalid(source, end), textEnd);
            if (!putUtf16(kReplacement, false, &output)) {
                return 0;
            }
        }
    }
    if (source != textEnd || (isTerminated && !putUtf16(U'\0', false, &output))) {
        return 0;
    }
    return invalid && (flags & MB_ERR_INVALID_CHARS) != 0 ? 0 : output.result();
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int length, LPSTR target,
                        int size, LPCSTR defaultChar, BOOL* defaultUsed) {
    if (codePage != CP_UTF8 || (flags & ~WC_ERR_INVALID_CHARS) != 0 || !source || length == 0 ||
        size < 0 || (size > 0 && !target) || defaultChar || defaultUsed) {
        return 0;
    }
    const LPCWCH end = source + sourceLength(source, length);
    Output<char> output(target, size);
    bool invalid = false;
    while (putAscii(&source, end, &output) && source != end) {
        char bytes[4];
        const char* const bytesEnd =
            utf8::unchecked::append(nextCodePoint(&source, end, &invalid), bytes);
        if (output.room() < static_cast<std::size_t>(bytesEnd - bytes)) {
            return 0;
        }
        std::for_each(static_cast<const char*>(bytes), bytesEnd,
                      [&output](char byte) { output.put(byte); });
    }
    return source != end || (invalid && (flags & WC_ERR_INVALID_CHARS) != 0) ? 0 : output.result();
}
