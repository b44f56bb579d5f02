// The one allocator behind strings, arrays and the contents of variants.
//
// Everything the automation platform hands out comes from here, so that a program which links its
// own allocator.cpp in place of ours decides which allocation fails.
#pragma once

#include <cstddef>

namespace zr {

/// @return zeroed memory, aligned for any type; null when memory is short.
void* allocate(std::size_t size);

/// Gives back what allocate returned; null is ignored.
void release(void* memory);

}  // namespace zr
