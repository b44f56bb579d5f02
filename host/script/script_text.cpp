// Text of the script engine, and the texts of the library made from it.
#include "host/script/script_text.h"

#include <utf8cpp/utf8.h>

#include <cstdint>
#include <iterator>
#include <new>

namespace zr::host {
namespace {

constexpr OLECHAR kReplacement = 0xFFFD;
constexpr std::uint32_t kFirstHalf = 0xD800;
constexpr std::uint32_t kSecondHalf = 0xDC00;

bool isHalf(OLECHAR unit, std::uint32_t which) {
    return (unit & 0xFC00U) == which;
}

/// Whether half of a surrogate pair, encoded on its own, begins here.
bool isHalfPair(std::string_view text) {
    return text.size() >= 3 && text[0] == '\xED' && (text[1] & 0xE0) == 0xA0 &&
           (text[2] & 0xC0) == 0x80;
}

}  // namespace

ErasedVector<OLECHAR> toUnits(std::string_view text) {
    ErasedVector<OLECHAR> units;
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
    return units;
}

zrkey::Text fromScriptText(std::string_view text) {
    const ErasedVector<OLECHAR> units = toUnits(text);
    zrkey::Text converted;
    converted.reset(SysAllocStringLen(units.data(), static_cast<UINT>(units.size())));
    if (!converted) {
        throw std::bad_alloc();
    }
    return converted;
}

ErasedBytes toScriptText(const OLECHAR* units, std::size_t size) {
    ErasedBytes bytes;
    bytes.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        utf8::unchecked::append(units[i], std::back_inserter(bytes));
    }
    return bytes;
}

ErasedBytes toUtf8(std::string_view text) {
    const ErasedVector<OLECHAR> units = toUnits(text);
    ErasedBytes bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        std::uint32_t character = units[i];
        if (isHalf(units[i], kFirstHalf) && i + 1 < units.size() &&
            isHalf(units[i + 1], kSecondHalf)) {
            character = 0x10000 + ((character - kFirstHalf) << 10) + (units[++i] - kSecondHalf);
        } else if (isHalf(units[i], kFirstHalf) || isHalf(units[i], kSecondHalf)) {
            character = kReplacement;
        }
        utf8::unchecked::append(character, std::back_inserter(bytes));
    }
    return bytes;
}

}  // namespace zr::host
