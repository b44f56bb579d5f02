// Text of the script engine, and the texts of the library made from it.
#include "host/script/script_text.h"

#include <utf8cpp/utf8.h>

#include <iterator>
#include <new>

namespace zr::host {
namespace {

/// Whether half of a surrogate pair, encoded on its own, begins here.
bool isHalfPair(std::string_view text) {
    return text.size() >= 3 && text[0] == '\xED' && (text[1] & 0xE0) == 0xA0 &&
           (text[2] & 0xC0) == 0x80;
}

}  // namespace

zrkey::Text fromScriptText(std::string_view text) {
    constexpr OLECHAR kReplacement = 0xFFFD;
    std::basic_string<OLECHAR> units;
    units.reserve(text.size());
    while (!text.empty()) {
        const std::size_t valid = utf8::find_invalid(text);
        const std::string_view whole = text.substr(0, valid);
        utf8::unchecked::utf8to16(whole.begin(), whole.end(), std::back_inserter(units));
        text.remove_prefix(whole.size());
        if (isHalfPair(text)) {
            auto half = text.begin();
            units.push_back(static_cast<OLECHAR>(utf8::unchecked::next(half)));
            text.remove_prefix(3);
        } else if (!text.empty()) {
            units.push_back(kReplacement);
            text.remove_prefix(1);
        }
    }
    zrkey::Text converted;
    converted.reset(SysAllocStringLen(units.data(), static_cast<UINT>(units.size())));
    if (!converted) {
        throw std::bad_alloc();
    }
    return converted;
}

std::string toScriptText(BSTR text) {
    std::string bytes;
    const UINT size = SysStringLen(text);
    bytes.reserve(size);
    for (UINT i = 0; i < size; ++i) {
        utf8::unchecked::append(text[i], std::back_inserter(bytes));
    }
    return bytes;
}

}  // namespace zr::host
