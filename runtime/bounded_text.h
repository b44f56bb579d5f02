// Appending text to buffers of fixed size.
#pragma once

#include <cstddef>
#include <cstring>

namespace zr {

/// Appends text to the terminated text in a buffer.
/// @param size  size of buffer in bytes.
/// @return false when the result and its terminator do not fit; the buffer is then unchanged.
inline bool appendText(char* buffer, std::size_t size, const char* text) {
    const std::size_t used = std::strlen(buffer);
    const std::size_t added = std::strlen(text);
    if (used + added >= size) {
        return false;
    }
    std::memcpy(buffer + used, text, added + 1);
    return true;
}

template <std::size_t Size>
bool appendText(char (&buffer)[Size], const char* text) {
    return appendText(buffer, Size, text);
}

}  // namespace zr
