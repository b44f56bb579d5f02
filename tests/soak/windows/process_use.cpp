// The resources of this process, from the system. Wine counts them as Windows does.
#include "tests/soak/process_use.h"

#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

#include <vector>

namespace zr::test {
namespace {

/// The blocks that are allocated in a heap.
std::size_t bytesIn(HANDLE heap) {
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(heap);
    while (HeapWalk(heap, &entry)) {
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    HeapUnlock(heap);
    return bytes;
}

}  // namespace

ProcessUse processUse() {
    ProcessUse use = {};
    std::vector<HANDLE> heaps(64);
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    for (HANDLE heap : heaps) {
        use.heapBytes += bytesIn(heap);
    }
    PROCESS_MEMORY_COUNTERS counters = {};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters)) {
        use.residentKiB = static_cast<long>(counters.WorkingSetSize / 1024);
    }
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    use.descriptors = static_cast<int>(handles);
    return use;
}

}  // namespace zr::test
