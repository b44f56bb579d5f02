// An allocator that fails on demand.
#include "tests/unit/platform/failing_allocator.h"

#include <cstdlib>

#include "platform/linux/automation/allocator.h"

namespace {

int g_untilFailure = 0;
int g_live = 0;

}  // namespace

namespace zr {

void* allocate(std::size_t size) {
    if (g_untilFailure > 0 && --g_untilFailure == 0) {
        return nullptr;
    }
    ++g_live;
    return std::calloc(1, size);
}

void release(void* memory) {
    g_live -= memory ? 1 : 0;
    std::free(memory);
}

namespace test {

void failAllocation(int number) {
    g_untilFailure = number;
}

int liveAllocations() {
    return g_live;
}

}  // namespace test
}  // namespace zr
