// What stands behind the test's malloc and operator new.
#pragma once

#include <cstddef>

namespace zr::test {

/// @param caller  where the allocation was asked for.
/// @return zeroed memory when isZeroed; null when the system has none or it is this one's turn to
/// fail.
void* allocateCounted(std::size_t size, bool isZeroed, void* caller);
/// The same for a block that is to grow or shrink; on failure it stays as it is.
void* reallocateCounted(void* block, std::size_t size, void* caller);
void releaseCounted(void* block);

}  // namespace zr::test
