// The allocator of strings, arrays and the contents of variants.
//
// All memory of the automation platform comes from here. A test links another allocator.cpp instead
// to make chosen allocations fail.
#pragma once

#include <cstddef>

namespace zr {

/// @return zeroed memory, aligned for any type; null when out of memory.
void* allocate(std::size_t size);

/// Frees memory from allocate; null is ignored.
void release(void* memory);

}  // namespace zr
