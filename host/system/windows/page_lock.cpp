// Pages on Windows. Dumps of a process are the system's matter there.
#include "host/system/page_lock.h"

#include <windows.h>

namespace zr::host {

std::size_t pageSize() {
    static const std::size_t s_size = [] {
        SYSTEM_INFO info = {};
        GetSystemInfo(&info);
        return std::size_t{info.dwPageSize};
    }();
    return s_size;
}

void lockPage(std::size_t address) {
    VirtualLock(reinterpret_cast<void*>(address), pageSize());
}

void unlockPage(std::size_t address) {
    VirtualUnlock(reinterpret_cast<void*>(address), pageSize());
}

int forbidCoreDumps() {
    return 0;
}

void allowCoreDumps(int) {}

}  // namespace zr::host
