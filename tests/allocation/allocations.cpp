// The process's malloc, before that of the C library and of the sanitizers, and its count.
//
// An allocation is the library's when, going up the stack, the library is met before the test and
// before the recording module; the automation platform and the system's libraries work for whoever
// called them. What the dynamic loader keeps for itself is nobody's: it does not always give it
// back after a failure.
#include "tests/allocation/allocations.h"

#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "tests/allocation/allocation_hook.h"

namespace zr::test {
namespace {

struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool holds(std::uintptr_t address) const { return address >= begin && address < end; }
};

struct Count {
    bool isOn = false;
    Allocations::Whose whose = Allocations::ofLibrary;
    std::size_t failing = 0;
    std::size_t made = 0;
    std::size_t live = 0;
    bool hasFailed = false;
};

Count g_count;
bool g_isInHook = false;
Range g_library;
Range g_test;
Range g_module;  // the recording module
Range g_loader;  // the dynamic loader

// Counted blocks, by open addressing: no allocation may be made here.
constexpr std::size_t kSlots = std::size_t{1} << 16;
void* g_blocks[kSlots];

std::size_t slotOf(const void* block) {
    return (reinterpret_cast<std::uintptr_t>(block) >> 4) * 0x9E3779B97F4A7C15u >> 48;
}

void* const kRemoved = &g_blocks;

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

struct Walk {
    std::uintptr_t caller;
    bool hasMetCaller = false;
    const Range* met = nullptr;
};

const Range* rangeOf(std::uintptr_t address) {
    for (const Range* range : {&g_library, &g_test, &g_module, &g_loader}) {
        if (range->holds(address)) {
            return range;
        }
    }
    return nullptr;
}

_Unwind_Reason_Code lookAtFrame(_Unwind_Context* context, void* data) {
    auto* walk = static_cast<Walk*>(data);
    const std::uintptr_t address = _Unwind_GetIP(context);
    walk->hasMetCaller = walk->hasMetCaller || address == walk->caller;
    walk->met = walk->hasMetCaller ? rangeOf(address) : nullptr;
    return walk->met ? _URC_END_OF_STACK : _URC_NO_REASON;
}

bool isCounted(void* caller) {
    Walk walk{reinterpret_cast<std::uintptr_t>(caller)};
    walk.met = rangeOf(walk.caller);
    if (!walk.met) {
        _Unwind_Backtrace(lookAtFrame, &walk);
    }
    return walk.met == &g_library ||
           (g_count.whose == Allocations::ofEverything && walk.met == &g_test);
}

int findRange(dl_phdr_info* info, std::size_t, void*) {
    Range range{UINTPTR_MAX, 0};
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& part = info->dlpi_phdr[i];
        if (part.p_type == PT_LOAD) {
            const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
            range.begin = begin < range.begin ? begin : range.begin;
            range.end = begin + part.p_memsz > range.end ? begin + part.p_memsz : range.end;
        }
    }
    if (std::strstr(info->dlpi_name, "/libzrkey.so")) {
        g_library = range;
    } else if (std::strstr(info->dlpi_name, "/recording_module.so")) {
        g_module = range;
    } else if (std::strstr(info->dlpi_name, "/ld-linux")) {
        g_loader = range;
    } else if (!info->dlpi_name[0] && !g_test.end) {
        g_test = range;
    }
    return 0;
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The dynamic loader may allocate while the functions behind these are looked up.
struct Behind {
    void* (*malloc)(std::size_t) = nullptr;
    void* (*calloc)(std::size_t, std::size_t) = nullptr;
    void* (*realloc)(void*, std::size_t) = nullptr;
    void (*free)(void*) = nullptr;
};
Behind g_behind;
bool g_isLookingUp = false;
alignas(16) char g_early[8192];
std::size_t g_earlyUsed = 0;

bool isEarly(const void* block) {
    return block >= g_early && block < g_early + sizeof g_early;
}

void* takeEarly(std::size_t size) {
    const std::size_t begin = g_earlyUsed;
    g_earlyUsed += (size + 15) & ~std::size_t{15};
    return g_earlyUsed <= sizeof g_early ? g_early + begin : nullptr;
}

bool findBehind() {
    if (!g_behind.free && !g_isLookingUp) {
        g_isLookingUp = true;
        g_behind.malloc = next<void*(std::size_t)>("malloc");
        g_behind.calloc = next<void*(std::size_t, std::size_t)>("calloc");
        g_behind.realloc = next<void*(void*, std::size_t)>("realloc");
        g_behind.free = next<void(void*)>("free");
        g_isLookingUp = false;
    }
    return g_behind.free != nullptr;
}

/// Counts an allocation.
/// @return false when it has to fail.
bool begin(void* caller, bool* isNoted) {
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

}  // namespace

void* allocateCounted(std::size_t size, bool isZeroed, void* caller) {
    if (!findBehind()) {
        return takeEarly(size);
    }
    bool isNoted = false;
    if (!begin(caller, &isNoted)) {
        return nullptr;
    }
    void* block = isZeroed ? g_behind.calloc(1, size) : g_behind.malloc(size);
    if (isNoted && block) {
        noteBlock(block);
    }
    return block;
}

void releaseCounted(void* block) {
    if (!block || isEarly(block)) {
        return;
    }
    forgetBlock(block);
    g_behind.free(block);
}

Allocations::Allocations(Whose whose, std::size_t failing) {
    dl_iterate_phdr(findRange, nullptr);
    Walk first{0};
    _Unwind_Backtrace(lookAtFrame, &first);  // what the unwinder keeps is not the library's
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

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT void* malloc(std::size_t size) {
    return zr::test::allocateCounted(size, false, __builtin_return_address(0));
}

EXPORT void* calloc(std::size_t count, std::size_t size) {
    std::size_t bytes = 0;
    return __builtin_mul_overflow(count, size, &bytes)
               ? nullptr
               : zr::test::allocateCounted(bytes, true, __builtin_return_address(0));
}

EXPORT void* realloc(void* block, std::size_t size) {
    if (!block) {
        return zr::test::allocateCounted(size, false, __builtin_return_address(0));
    }
    bool isNoted = false;
    if (!zr::test::findBehind() || zr::test::isEarly(block) ||
        !zr::test::begin(__builtin_return_address(0), &isNoted)) {
        return nullptr;
    }
    zr::test::forgetBlock(block);
    void* moved = zr::test::g_behind.realloc(block, size);
    if (isNoted && moved) {
        zr::test::noteBlock(moved);
    }
    return moved;
}

EXPORT void free(void* block) {
    zr::test::releaseCounted(block);
}
