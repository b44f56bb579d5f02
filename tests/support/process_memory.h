// Looking for bytes in the memory of this process.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace zr::test {

/// Bytes to search for. They are stored masked, so that the search itself holds no copy.
class MaskedBytes {
public:
    /// @param bytes  copied masked; the caller wipes its own copy.
    MaskedBytes(const void* bytes, std::size_t size);

    /// How often the writable memory of the process holds the bytes.
    std::size_t countInMemory() const;

private:
    std::size_t countInRange(std::size_t begin, std::size_t end) const;
    std::size_t countIn(const unsigned char* bytes, std::size_t size) const;

    std::basic_string<unsigned char> m_masked;
};

/// Calls visit with the beginning and the size of each writable part of memory.
void forEachWritableRegion(const std::function<void(std::size_t begin, std::size_t size)>& visit);

/// Copies memory of the process as another process would.
/// @return how many bytes were read.
std::size_t readMemory(std::size_t from, void* to, std::size_t size);

}  // namespace zr::test
