// The memory of this process on Windows.
#include "tests/support/process_memory.h"

#include <windows.h>

namespace zr::test {

void forEachWritableRegion(const std::function<void(std::size_t begin, std::size_t size)>& visit) {
    MEMORY_BASIC_INFORMATION region;
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) == sizeof region;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        const DWORD writable =
            PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
        if (region.State == MEM_COMMIT && (region.Protect & writable) != 0 &&
            (region.Protect & PAGE_GUARD) == 0) {
            visit(reinterpret_cast<std::size_t>(region.BaseAddress), region.RegionSize);
        }
    }
}

std::size_t readMemory(std::size_t from, void* to, std::size_t size) {
    SIZE_T read = 0;
    ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(from), to, size, &read);
    return read;
}

}  // namespace zr::test
