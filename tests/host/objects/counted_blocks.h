// Counts the blocks of operator new. A program that links counted_blocks.cpp has its operators.
#pragma once

namespace zr::test {

/// The blocks that are allocated and not freed.
long liveBlocks();

}  // namespace zr::test
