// An allocator of the automation platform that fails on demand and counts its live blocks.
#pragma once

namespace zr::test {

/// Makes an allocation fail.
/// @param number  which one, counted from 1 from now on; 0 for none.
void failAllocation(int number);

/// The number of blocks that were allocated and not released.
int liveAllocations();

}  // namespace zr::test
