// Conversion between the three encodings a script's text passes through.
#include "text.h"

#include <optional>

namespace zr::host {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isHighHalf(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowHalf(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

/// Takes one encoded character off the front of text, or nothing of one malformed byte.
std::optional<char32_t> takeCharacter(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    std::size_t length = 1;
    char32_t character = lead;
    char32_t least = 0;
    if (lead >= 0xF0 && lead < 0xF8) {
        length = 4;
        character = lead & 0x07U;
        least = 0x10000;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        length = 3;
        character = lead & 0x0FU;
        least = 0x800;
    } else if (lead >= 0xC0 && lead < 0xE0) {
        length = 2;
        character = lead & 0x1FU;
        least = 0x80;
    } else if (lead >= 0x80) {
        text.remove_prefix(1);
        return std::nullopt;
    }
    bool wellFormed = length <= text.size();
    for (std::size_t i = 1; wellFormed && i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        wellFormed = (next & 0xC0U) == 0x80U;
        character = (character << 6) | (next & 0x3FU);
    }
    if (!wellFormed || character < least || character > 0x10FFFF) {
        text.remove_prefix(1);
        return std::nullopt;
    }
    text.remove_prefix(length);
    return character;
}

void appendUtf8(std::string& bytes, char32_t character) {
    const auto tail = [&](unsigned shift) {
        bytes.push_back(static_cast<char>(0x80U | ((character >> shift) & 0x3FU)));
    };
    if (character < 0x80) {
        bytes.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        bytes.push_back(static_cast<char>(0xC0U | (character >> 6)));
        tail(0);
    } else if (character < 0x10000) {
        bytes.push_back(static_cast<char>(0xE0U | (character >> 12)));
        tail(6);
        tail(0);
    } else {
        bytes.push_back(static_cast<char>(0xF0U | (character >> 18)));
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::optional<char32_t> character = takeCharacter(text);
        if (!character || isHighHalf(*character) || isLowHalf(*character)) {
            return false;
        }
    }
    return true;
}

OleString toUtf16(std::string_view text) {
    OleString units;
    units.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = takeCharacter(text).value_or(kReplacement);
        if (character < 0x10000) {
            units.push_back(static_cast<OLECHAR>(character));
        } else {
            units.push_back(static_cast<OLECHAR>(0xD800 + ((character - 0x10000) >> 10)));
            units.push_back(static_cast<OLECHAR>(0xDC00 + ((character - 0x10000) & 0x3FF)));
        }
    }
    return units;
}

std::string toScriptText(OleStringView text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const OLECHAR unit : text) {
        appendUtf8(bytes, unit);
    }
    return bytes;
}

std::string toUtf8(OleStringView text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (isHighHalf(unit) && i + 1 < text.size() && isLowHalf(text[i + 1])) {
            ++i;
            appendUtf8(bytes, 0x10000 + ((unit - 0xD800) << 10) + (char32_t{text[i]} - 0xDC00));
        } else {
            appendUtf8(bytes, isHighHalf(unit) || isLowHalf(unit) ? kReplacement : unit);
        }
    }
    return bytes;
}

}  // namespace zr::host
