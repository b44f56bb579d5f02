// The parts of scale, see scale.cpp. Each reports on a stream and returns whether all was as it should.
#pragma once

#include <cstdio>

#include "tests/soak/process_use.h"

namespace zr::test {

bool checkObjects(std::FILE* report, long samples);
bool checkOperations(std::FILE* report, long count);
bool checkThreads(std::FILE* report, long rounds);
bool checkMixedWork(std::FILE* report, long seconds);

/// Growth that is no leak: freed blocks that the C library keeps, and tables that it makes once. A leak of
/// the smallest block at every call exceeds it after a few hundred calls.
constexpr std::size_t kAllowedHeapBytes = 4096;
constexpr long kAllowedResidentKiB = 1024;

/// Bytes that were added to the heap.
inline long long heapGrowth(const ProcessUse& before, const ProcessUse& after) {
    return static_cast<long long>(after.heapBytes) - static_cast<long long>(before.heapBytes);
}

/// Begins the file of the console lines anew, so that it stays small.
void forgetConsoleLines();

}  // namespace zr::test
