// The operators that count. In a file of their own: the compiler must not see through them.
#include "tests/host/objects/counted_blocks.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> s_liveBlocks{0};

}  // namespace

// All forms: the sanitizer has its own of those that are not here.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    void* const block = std::malloc(size > 0 ? size : 1);
    s_liveBlocks += block ? 1 : 0;
    return block;
}
void* operator new(std::size_t size) {
    if (void* const block = operator new(size, std::nothrow)) {
        return block;
    }
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return operator new(size, std::nothrow);
}
void operator delete(void* block) noexcept {
    s_liveBlocks -= block ? 1 : 0;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
void operator delete[](void* block) noexcept {
    operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace zr::test {

long liveBlocks() {
    return s_liveBlocks;
}

}  // namespace zr::test
