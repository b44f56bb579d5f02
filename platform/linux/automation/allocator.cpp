// The allocator of the automation platform, over the C heap.
#include "platform/linux/automation/allocator.h"

#include <cstdlib>

namespace zr {

void* allocate(std::size_t size) {
    return std::calloc(1, size);
}

void release(void* memory) {
    std::free(memory);
}

}  // namespace zr
