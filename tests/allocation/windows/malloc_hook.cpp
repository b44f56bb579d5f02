// Replaces the C library's malloc, as the test and the library import it. operator new, linked into
// each of them, calls it too.
#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "tests/allocation/allocation_count.h"
#include "tests/allocation/windows/malloc_spy.h"

namespace zr::test {
namespace {

// The imports of this file are replaced, too.
AllocatorFunctions g_behind;

void* note(bool isNoted, void* block) {
    if (isNoted && block) {
        noteBlock(block);
    }
    return block;
}

void* countedMalloc(std::size_t size) {
    bool isNoted = false;
    return beginAllocation(__builtin_return_address(0), &isNoted)
               ? note(isNoted, g_behind.malloc(size))
               : nullptr;
}

void* countedCalloc(std::size_t count, std::size_t size) {
    bool isNoted = false;
    return beginAllocation(__builtin_return_address(0), &isNoted)
               ? note(isNoted, g_behind.calloc(count, size))
               : nullptr;
}

void* countedRealloc(void* block, std::size_t size) {
    bool isNoted = false;
    if (!beginAllocation(__builtin_return_address(0), &isNoted)) {
        return nullptr;
    }
    forgetBlock(block);
    return note(isNoted, g_behind.realloc(block, size));
}

void countedFree(void* block) {
    forgetBlock(block);
    g_behind.free(block);
}

const IMAGE_NT_HEADERS* headersOf(const char* base) {
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
}

/// @return the import table entry of a function; null when it is not imported.
void** importOf(char* base, const char* name) {
    const auto& directory =
        headersOf(base)->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* dll = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; dll->Name != 0; ++dll) {
        const auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + dll->OriginalFirstThunk);
        auto* places = reinterpret_cast<IMAGE_THUNK_DATA*>(base + dll->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++places) {
            const auto* entry =
                reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal) &&
                std::strcmp(reinterpret_cast<const char*>(entry->Name), name) == 0) {
                return reinterpret_cast<void**>(&places->u1.Function);
            }
        }
    }
    return nullptr;
}

template <class Function>
void replaceImport(char* base, const char* name, Function* hook, Function** behind) {
    void** place = importOf(base, name);
    DWORD protection = 0;
    if (!place || *place == reinterpret_cast<void*>(hook) ||
        !VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection)) {
        return;
    }
    *behind = reinterpret_cast<Function*>(*place);
    *place = reinterpret_cast<void*>(hook);
    VirtualProtect(place, sizeof *place, protection, &protection);
}

void replaceImports(char* base) {
    replaceImport(base, "malloc", countedMalloc, &g_behind.malloc);
    replaceImport(base, "calloc", countedCalloc, &g_behind.calloc);
    replaceImport(base, "realloc", countedRealloc, &g_behind.realloc);
    replaceImport(base, "free", countedFree, &g_behind.free);
}

char* baseOf(const char* name) {
    return reinterpret_cast<char*>(GetModuleHandleA(name));
}

CodeRange rangeOf(const char* base) {
    const auto begin = reinterpret_cast<std::uintptr_t>(base);
    return base ? CodeRange{begin, begin + headersOf(base)->OptionalHeader.SizeOfImage}
                : CodeRange{};
}

}  // namespace

CodeRanges prepareHooks() {
    char* test = baseOf(nullptr);
    char* library = baseOf("zrkey.dll");
    replaceImports(test);
    replaceImports(library);
    watchTaskMemory();
    return {rangeOf(library), rangeOf(test), rangeOf(baseOf("recording_module.dll")), {}};
}

const CodeRange* firstMet(const CodeRanges& ranges, std::uintptr_t caller) {
    const CodeRange* met = ranges.of(caller);
    void* frames[62];
    const USHORT count = met ? 0 : CaptureStackBackTrace(0, 62, frames, nullptr);
    bool hasMetCaller = false;
    for (USHORT i = 0; i < count && !met; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(frames[i]);
        hasMetCaller = hasMetCaller || address == caller;
        met = hasMetCaller ? ranges.of(address) : nullptr;
    }
    return met;
}

}  // namespace zr::test
