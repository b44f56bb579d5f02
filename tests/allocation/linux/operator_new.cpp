// operator new and delete of the process, over the counting allocator.
#include <new>

#include "tests/allocation/linux/allocation_hook.h"

using zr::test::allocateCounted;
using zr::test::releaseCounted;

namespace {

void* allocateOrThrow(std::size_t size, void* caller) {
    void* block = allocateCounted(size, false, caller);
    if (!block) {
        throw std::bad_alloc();
    }
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocateCounted(size, false, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocateCounted(size, false, __builtin_return_address(0));
}
void operator delete(void* block) noexcept {
    releaseCounted(block);
}
void operator delete[](void* block) noexcept {
    releaseCounted(block);
}
void operator delete(void* block, std::size_t) noexcept {
    releaseCounted(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    releaseCounted(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    releaseCounted(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    releaseCounted(block);
}
