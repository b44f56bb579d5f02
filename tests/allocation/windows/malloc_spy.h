// The automation platform's allocations.
#pragma once

namespace zr::test {

/// Starts counting strings, arrays and all other memory of the task allocator.
void watchTaskMemory();

}  // namespace zr::test
