// What the hooks of both targets share: whose an allocation is, whether it is its turn to fail, and
// which blocks are out.
//
// An allocation is the library's when, going up the stack, the library is met before the test and
// before the recording module; the automation platform and the system's libraries work for whoever
// called them. What the dynamic loader keeps for itself is nobody's: it does not always give it
// back after a failure.
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

/// What stands behind the hooks.
struct AllocatorFunctions {
    void* (*malloc)(std::size_t) = nullptr;
    void* (*calloc)(std::size_t, std::size_t) = nullptr;
    void* (*realloc)(void*, std::size_t) = nullptr;
    void (*free)(void*) = nullptr;
};

/// Of the target: sets the hooks, if they do not stand yet, and finds the parts of the process.
CodeRanges prepareHooks();

/// Of the target: goes up the stack.
/// @param caller  where the allocation was asked for; what lies below it is the hook.
/// @return the first of the parts that is met; null without one.
const CodeRange* firstMet(const CodeRanges& ranges, std::uintptr_t caller);

/// Counts an allocation that is asked for.
/// @param isNoted  whether its block is to be noted.
/// @return false when it has to fail.
bool beginAllocation(const void* caller, bool* isNoted);

void noteBlock(void* block);
void forgetBlock(const void* block);

}  // namespace zr::test
