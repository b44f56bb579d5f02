// The allocator of the automation platform: the C heap.
#include "allocator.h"

#include <cstdlib>

namespace zr {

void* allocate(std::size_t size) {
    return std::calloc(1, size);
}

void release(void* memory) {
    std::free(memory);
}

}  // namespace zr
