// The malloc of the process; it replaces those of the C library and the sanitizers.
#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

#include <cstring>

#include "tests/allocation/allocation_count.h"
#include "tests/allocation/linux/allocation_hook.h"

namespace zr::test {
namespace {

struct Walk {
    const CodeRanges& ranges;
    std::uintptr_t caller;
    bool hasMetCaller = false;
    const CodeRange* met = nullptr;
};

_Unwind_Reason_Code lookAtFrame(_Unwind_Context* context, void* data) {
    auto* walk = static_cast<Walk*>(data);
    const std::uintptr_t address = _Unwind_GetIP(context);
    walk->hasMetCaller = walk->hasMetCaller || address == walk->caller;
    walk->met = walk->hasMetCaller ? walk->ranges.of(address) : nullptr;
    return walk->met ? _URC_END_OF_STACK : _URC_NO_REASON;
}

int findRange(dl_phdr_info* info, std::size_t, void* data) {
    CodeRange range{UINTPTR_MAX, 0};
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& part = info->dlpi_phdr[i];
        if (part.p_type == PT_LOAD) {
            const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr;
            range.begin = begin < range.begin ? begin : range.begin;
            range.end = begin + part.p_memsz > range.end ? begin + part.p_memsz : range.end;
        }
    }
    auto* ranges = static_cast<CodeRanges*>(data);
    if (std::strstr(info->dlpi_name, "/libzrkey.so")) {
        ranges->library = range;
    } else if (std::strstr(info->dlpi_name, "/recording_module.so")) {
        ranges->module = range;
    } else if (std::strstr(info->dlpi_name, "/ld-linux")) {
        ranges->loader = range;
    } else if (!info->dlpi_name[0] && !ranges->test.end) {
        ranges->test = range;
    }
    return 0;
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The dynamic loader may allocate while the original functions are looked up.
AllocatorFunctions g_behind;
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

}  // namespace

CodeRanges prepareHooks() {
    CodeRanges ranges;
    dl_iterate_phdr(findRange, &ranges);
    return ranges;
}

const CodeRange* firstMet(const CodeRanges& ranges, std::uintptr_t caller) {
    Walk walk{ranges, caller};
    walk.met = ranges.of(caller);
    if (!walk.met) {
        _Unwind_Backtrace(lookAtFrame, &walk);
    }
    return walk.met;
}

void* allocateCounted(std::size_t size, bool isZeroed, void* caller) {
    if (!findBehind()) {
        return takeEarly(size);
    }
    bool isNoted = false;
    if (!beginAllocation(caller, &isNoted)) {
        return nullptr;
    }
    void* block = isZeroed ? g_behind.calloc(1, size) : g_behind.malloc(size);
    if (isNoted && block) {
        noteBlock(block);
    }
    return block;
}

void* reallocateCounted(void* block, std::size_t size, void* caller) {
    bool isNoted = false;
    if (!findBehind() || isEarly(block) || !beginAllocation(caller, &isNoted)) {
        return nullptr;
    }
    forgetBlock(block);
    void* moved = g_behind.realloc(block, size);
    if (isNoted && moved) {
        noteBlock(moved);
    }
    return moved;
}

void releaseCounted(void* block) {
    if (!block || isEarly(block)) {
        return;
    }
    forgetBlock(block);
    g_behind.free(block);
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
    void* caller = __builtin_return_address(0);
    return block ? zr::test::reallocateCounted(block, size, caller)
                 : zr::test::allocateCounted(size, false, caller);
}

EXPORT void free(void* block) {
    zr::test::releaseCounted(block);
}
