// Characters that a person sees in a prompt as they are.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace zr::host {

struct CharacterRange {
    char32_t first;
    char32_t last;
};

template <std::size_t Count>
bool isIn(const CharacterRange (&ranges)[Count], char32_t character) {
    return std::any_of(std::begin(ranges), std::end(ranges), [&](const CharacterRange& range) {
        return range.first <= character && character <= range.last;
    });
}

/// Not control characters, line ends and tabs among them, characters that change the direction or the
/// order of others, spaces but the blank, and what is not drawn.
bool isShown(char32_t character);

/// Letters, digits and marks of scripts that are written from right to left.
bool isRightToLeft(char32_t character);

}  // namespace zr::host
