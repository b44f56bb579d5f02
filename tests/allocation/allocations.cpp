// The count of allocations, and the allocated blocks.
#include "tests/allocation/allocations.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "tests/allocation/allocation_count.h"

namespace zr::test {
namespace {

struct Count {
    bool isOn = false;
    Allocations::Whose whose = Allocations::kOfLibrary;
    std::size_t failing = 0;
    std::size_t made = 0;
    std::size_t live = 0;
    bool hasFailed = false;
};

Count g_count;
CodeRanges g_ranges;
bool g_isInHook = false;

// Uses open addressing, because it must not allocate.
constexpr std::size_t kSlots = std::size_t{1} << 16;
void* g_blocks[kSlots];
void* const kRemoved = &g_blocks;

std::size_t slotOf(const void* block) {
    return (reinterpret_cast<std::uintptr_t>(block) >> 4) * std::uint64_t{0x9E3779B97F4A7C15} >> 48;
}

bool isCounted(const void* caller) {
    const CodeRange* met = firstMet(g_ranges, reinterpret_cast<std::uintptr_t>(caller));
    return met == &g_ranges.library ||
           (g_count.whose == Allocations::kOfEverything && met == &g_ranges.test);
}

}  // namespace

const CodeRange* CodeRanges::of(std::uintptr_t address) const {
    for (const CodeRange* range : {&library, &test, &module, &loader}) {
        if (range->holds(address)) {
            return range;
        }
    }
    return nullptr;
}

void noteBlock(void* block) {
    std::size_t slot = slotOf(block);
    while (g_blocks[slot] && g_blocks[slot] != kRemoved) {
        slot = (slot + 1) % kSlots;
    }
    g_blocks[slot] = block;
    ++g_count.live;
}

void forgetBlock(const void* block) {
    for (std::size_t slot = slotOf(block); g_blocks[slot]; slot = (slot + 1) % kSlots) {
        if (g_blocks[slot] == block) {
            g_blocks[slot] = kRemoved;
            --g_count.live;
            return;
        }
    }
}

bool beginAllocation(const void* caller, bool* isNoted) {
    *isNoted = false;
    if (!g_count.isOn || g_isInHook) {
        return true;
    }
    g_isInHook = true;
    *isNoted = isCounted(caller);
    g_isInHook = false;
    if (*isNoted && ++g_count.made == g_count.failing) {
        g_count.hasFailed = true;
        return false;
    }
    return true;
}

Allocations::Allocations(Whose whose, std::size_t failing) {
    g_ranges = prepareHooks();
    firstMet(g_ranges, 0);  // what the unwinder keeps is not the library's
    std::memset(g_blocks, 0, sizeof g_blocks);
    g_count = {};
    g_count.whose = whose;
    g_count.failing = failing;
    g_count.isOn = true;
}

void Allocations::stop() {
    g_count.isOn = false;
}

std::size_t Allocations::made() const {
    return g_count.made;
}

bool Allocations::hasFailed() const {
    return g_count.hasFailed;
}

std::size_t Allocations::live() const {
    return g_count.live;
}

std::size_t onlyAllocation() {
    const char* number = std::getenv("ZRKEY_TEST_ALLOCATION");
    return number ? std::strtoul(number, nullptr, 10) : 0;
}

}  // namespace zr::test
