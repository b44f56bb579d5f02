// The allocator behind the test's malloc and operator new.
#pragma once

#include <cstddef>

namespace zr::test {

/// @param caller  the caller of the allocation.
/// @return memory, zeroed when isZeroed; null when the system has none or the allocation must
/// fail.
void* allocateCounted(std::size_t size, bool isZeroed, void* caller);
/// The same for a block that changes its size; a failure leaves it unchanged.
void* reallocateCounted(void* block, std::size_t size, void* caller);
void releaseCounted(void* block);

}  // namespace zr::test
