// An allocator of the automation platform that fails on demand and counts what is not given back.
#pragma once

namespace zr::test {

/// The allocation that fails, counted from 1; 0 for none. Resets the count.
void failAllocation(int number);

/// Blocks that were handed out and not given back.
int liveAllocations();

}  // namespace zr::test
