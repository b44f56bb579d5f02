// Data that a person can read in a prompt.
#include "host/browser/plain_text.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <cstddef>

#include "host/browser/shown_characters.h"

namespace zr::host {
namespace {

constexpr std::size_t kMostBytes = 512;
constexpr std::ptrdiff_t kMostLines = 12;

bool isBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

bool isLetterOrDigitOfAscii(char32_t character) {
    return (character >= U'0' && character <= U'9') || (character >= U'A' && character <= U'Z') ||
           (character >= U'a' && character <= U'z');
}

/// Also without a letter: a window turns the order of two such numbers.
bool isDigitOfArabic(char32_t character) {
    constexpr CharacterRange kDigits[] = {{0x660, 0x66C}, {0x6F0, 0x6F9}};
    return isIn(kDigits, character);
}

/// A carriage return is a line end only before a line feed.
bool hasLoneReturn(std::string_view text) {
    for (std::size_t at = text.find('\r'); at != std::string_view::npos;
         at = text.find('\r', at + 1)) {
        if (at + 1 == text.size() || text[at + 1] != '\n') {
            return true;
        }
    }
    return false;
}

}  // namespace

bool isShortPlainText(std::string_view data) {
    if (data.size() > kMostBytes || std::ranges::all_of(data, isBlank) || hasLoneReturn(data) ||
        std::ranges::count(data, '\n') >= kMostLines || !utf8::is_valid(data)) {
        return false;
    }
    bool isFromRight = false;
    bool isFromLeft = false;
    for (auto at = data.begin(); at != data.end();) {
        const char32_t character = utf8::next(at, data.end());
        const bool isLayout = character == U'\t' || character == U'\r' || character == U'\n';
        if (!isLayout && !isShown(character)) {
            return false;
        }
        isFromRight = isFromRight || isRightToLeft(character);
        isFromLeft = isFromLeft || isLetterOrDigitOfAscii(character) ||
                     isDigitOfArabic(character) || (character > 0x7F && !isRightToLeft(character));
    }
    // A window puts words of both directions into an order that the text does not have.
    return !(isFromRight && isFromLeft);
}

}  // namespace zr::host
