// Looking for bytes in the memory of this process.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace zr::test {

/// Bytes that nobody else holds: each is masked, so that the search leaves no copy of them.
class MaskedBytes {
public:
    /// @param bytes  copied masked; what holds them is the caller's to wipe.
    MaskedBytes(const void* bytes, std::size_t size);

    /// How often the writable memory of the process holds the bytes.
    std::size_t countInMemory() const;

private:
    std::size_t countInRange(std::size_t begin, std::size_t end) const;
    std::size_t countIn(const unsigned char* bytes, std::size_t size) const;

    std::basic_string<unsigned char> m_masked;
};

/// Calls visit with the beginning and the size of each part of memory that can be written.
void forEachWritableRegion(const std::function<void(std::size_t begin, std::size_t size)>& visit);

/// Copies memory of the process as another process would.
/// @return how many bytes were read.
std::size_t readMemory(std::size_t from, void* to, std::size_t size);

}  // namespace zr::test
