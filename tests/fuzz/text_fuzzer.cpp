// Conversions between UTF-8 and UTF-16: reported and written lengths agree, valid text
// converts back unchanged, and a second conversion of malformed text changes nothing more.
#include <cstring>
#include <string>
#include <vector>

#include "platform/kernel.h"
#include "runtime/string_convert.h"
#include "runtime/zcom_bstr.h"
#include "tests/fuzz/expect.h"
#include "tests/fuzz/input.h"

namespace {

using zr::fuzz::expect;
using Wide = std::basic_string<OLECHAR>;

constexpr int kAll = -1;

/// Reads bytes as UTF-16 units; an odd byte at the end is dropped.
Wide unitsOf(const std::string& bytes) {
    Wide units(bytes.size() / sizeof(OLECHAR), OLECHAR{});
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(OLECHAR));
    return units;
}

/// Converts with a buffer of the reported size, and checks that a smaller one is refused.
Wide toWide(const std::string& text, DWORD flags = 0) {
    const auto length = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_UTF8, flags, text.data(), length, nullptr, 0);
    if (needed == 0) {
        return {};
    }
    Wide wide(static_cast<std::size_t>(needed), OLECHAR{});
    expect(MultiByteToWideChar(CP_UTF8, flags, text.data(), length, wide.data(), needed) == needed,
           "the reported number of units is written");
    expect(needed <= length, "UTF-16 takes no more units than UTF-8 bytes");
    return wide;
}

std::string toNarrow(const Wide& wide, DWORD flags = 0) {
    const auto length = static_cast<int>(wide.size());
    const int needed =
        WideCharToMultiByte(CP_UTF8, flags, wide.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed == 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(needed), '\0');
    expect(WideCharToMultiByte(CP_UTF8, flags, wide.data(), length, text.data(), needed, nullptr,
                               nullptr) == needed,
           "the reported number of bytes is written");
    std::string small(text.size() - 1, '\0');
    expect(small.empty() || WideCharToMultiByte(CP_UTF8, flags, wide.data(), length, small.data(),
                                                needed - 1, nullptr, nullptr) == 0,
           "a buffer that is too small is refused");
    return text;
}

/// Whether all surrogates are paired; checked without the library.
bool isWellFormed(const Wide& wide) {
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const bool isHigh = (wide[i] & 0xFC00) == 0xD800;
        const bool isLow = (wide[i] & 0xFC00) == 0xDC00;
        if (isLow || (isHigh && (i + 1 == wide.size() || (wide[i + 1] & 0xFC00) != 0xDC00))) {
            return false;
        }
        i += isHigh ? 1 : 0;
    }
    return true;
}

void checkNarrow(const std::string& text) {
    const Wide wide = toWide(text);
    expect(isWellFormed(wide), "no surrogate comes out of UTF-8 alone");
    const std::string again = toNarrow(wide);
    expect(toWide(again) == wide, "repaired text stays as it is");
    const bool isStrict = text.empty() || !toWide(text, MB_ERR_INVALID_CHARS).empty();
    expect(isStrict == (again == text), "exactly valid text comes back");
    expect(text.empty() || !wide.empty(), "without strictness every text is converted");
}

void checkWide(const Wide& wide) {
    const std::string text = toNarrow(wide);
    expect(wide.empty() || !toWide(text, MB_ERR_INVALID_CHARS).empty(), "what comes out is valid");
    expect((toWide(text) == wide) == isWellFormed(wide), "exactly well-formed text comes back");
    const bool isStrict = wide.empty() || !toNarrow(wide, WC_ERR_INVALID_CHARS).empty();
    expect(isStrict == isWellFormed(wide), "strictness refuses lone surrogates");
}

/// The functions of the library that read up to a terminator.
void checkStrings(const std::string& text, unsigned int cut) {
    const std::string used = text.c_str();
    const BSTR string = ZSysAllocUTF8String(used.c_str());
    expect(string != nullptr, "every text makes a string");
    const int size = ZBstrToUtf8(string, nullptr, 0);
    expect(size > 0, "every string has a text");
    std::vector<char> narrow(static_cast<std::size_t>(size), 'u');
    expect(ZBstrToUtf8(string, narrow.data(), static_cast<unsigned int>(size) - 1) == size &&
               narrow.front() == 'u',
           "a text that does not fit is not written");
    expect(ZBstrToUtf8(string, narrow.data(), static_cast<unsigned int>(size)) == size,
           "a text that fits is written");
    const zrapi::ZComBSTR again(narrow.data());
    expect(Wide(again, again.GetLength()) == Wide(string, SysStringLen(string)),
           "text and string are equal");
    expect(strlen_unicode(string) == SysStringLen(string), "the lengths are equal");
    SysFreeString(string);

    const BSTR part = ZSysAllocUTF8StringLen(used.c_str(), cut);
    expect(part != nullptr, "every part makes a string");
    expect(SysStringLen(part) <= used.size(), "a part is no longer than its text");
    SysFreeString(part);
    SysFreeString(_ZSysAllocUTF8String(used.c_str()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zr::fuzz::Input input(data, size);
    const unsigned int cut = input.number<std::uint8_t>();
    const int room = static_cast<int>(input.below(41));
    const std::string text = input.rest();
    const Wide wide = unitsOf(text);
    checkNarrow(text);
    checkWide(wide);
    checkStrings(text, cut);

    std::vector<OLECHAR> units(static_cast<std::size_t>(room));
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), kAll, units.data(), room);
    std::vector<char> bytes(static_cast<std::size_t>(room));
    WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), kAll, bytes.data(), room, nullptr, nullptr);
    return 0;
}
