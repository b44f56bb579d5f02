// Keeps PINs off the disk, as far as the system allows: no core dumps, no swapping.
#pragma once

#include <cstddef>

namespace zr::host {

/// Switches core dumps of the process off until destruction; afterwards they are as before. May be
/// nested. On Windows, where the process does not decide this, without an effect.
class NoCoreDumps {
public:
    NoCoreDumps();
    ~NoCoreDumps();
    NoCoreDumps(const NoCoreDumps&) = delete;
    NoCoreDumps& operator=(const NoCoreDumps&) = delete;
};

/// Keeps memory that may hold a PIN from being written to disk until destruction: no core dumps, and
/// its pages are not swapped out. A page may be kept by several of these. The system may refuse to
/// keep more pages; that is no failure.
class SecretMemory {
public:
    SecretMemory(const void* memory, std::size_t size);
    ~SecretMemory();
    SecretMemory(const SecretMemory&) = delete;
    SecretMemory& operator=(const SecretMemory&) = delete;

private:
    NoCoreDumps m_noCoreDumps;
    std::size_t m_begin;  ///< the address of the first page
    std::size_t m_end;    ///< behind the last page
};

}  // namespace zr::host
