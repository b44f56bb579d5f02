// The automation platform's allocations.
#pragma once

namespace zr::test {

/// From now on strings, arrays and all else that comes from the task allocator is counted.
void watchTaskMemory();

}  // namespace zr::test
