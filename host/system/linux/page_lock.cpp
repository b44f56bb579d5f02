// Pages and core dumps on Linux.
#include "host/system/page_lock.h"

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zr::host {

std::size_t pageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Not by the functions of the C library: the sanitizers replace them by functions that do nothing.

void lockPage(std::size_t address) {
    syscall(SYS_mlock, address, pageSize());
}

void unlockPage(std::size_t address) {
    syscall(SYS_munlock, address, pageSize());
}

int forbidCoreDumps() {
    const int before = prctl(PR_GET_DUMPABLE);
    prctl(PR_SET_DUMPABLE, 0);
    return before;
}

void allowCoreDumps(int before) {
    prctl(PR_SET_DUMPABLE, before);
}

}  // namespace zr::host
