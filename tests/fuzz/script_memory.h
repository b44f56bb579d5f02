// What a script's limit of memory promises: in the count of one script, and in the whole process.
#pragma once

#include <cstddef>

#include "tests/fuzz/input.h"

namespace zr::fuzz {

/// Counts the bytes that the process allocates while it lives. One at a time.
class AllocatedBytes {
public:
    AllocatedBytes();
    AllocatedBytes(const AllocatedBytes&) = delete;
    AllocatedBytes& operator=(const AllocatedBytes&) = delete;
    ~AllocatedBytes();

    /// The most that was allocated at once and not before.
    std::size_t most() const;
};

/// Requests memory from a script's count in any order. It grants exactly what fits the limit.
void useMemory(Input& input, std::size_t limit);

}  // namespace zr::fuzz
