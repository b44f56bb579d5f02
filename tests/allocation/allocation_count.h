// Shared by the hooks of both targets: who made an allocation, whether it must fail, and which
// blocks are allocated.
//
// An allocation is the library's when, going up the stack, the library comes before the test and
// before the recording module; the automation platform and the system's libraries count for their
// callers. Memory of the dynamic loader is not counted: the loader does not always free it after
// a failure.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zr::test {

/// Where a part of the process is loaded.
struct CodeRange {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool holds(std::uintptr_t address) const { return address >= begin && address < end; }
};

struct CodeRanges {
    CodeRange library;
    CodeRange test;
    CodeRange module;  ///< the recording module
    CodeRange loader;  ///< the dynamic loader
    /// @return the part that holds the address; null for any other.
    const CodeRange* of(std::uintptr_t address) const;
};

/// The functions that the hooks call.
struct AllocatorFunctions {
    void* (*malloc)(std::size_t) = nullptr;
    void* (*calloc)(std::size_t, std::size_t) = nullptr;
    void* (*realloc)(void*, std::size_t) = nullptr;
    void (*free)(void*) = nullptr;
};

/// Of the target: installs the hooks, unless installed, and finds the parts of the process.
CodeRanges prepareHooks();

/// Of the target: goes up the stack.
/// @param caller  the caller of the hook.
/// @return the first part on the stack; null without one.
const CodeRange* firstMet(const CodeRanges& ranges, std::uintptr_t caller);

/// Counts an allocation.
/// @param isNoted  whether to record its block.
/// @return false when it must fail.
bool beginAllocation(const void* caller, bool* isNoted);

void noteBlock(void* block);
void forgetBlock(const void* block);

}  // namespace zr::test
