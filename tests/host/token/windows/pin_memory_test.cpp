// PINs that a command holds are not swapped out. On Windows only, where a process asks for the state
// of a page.
#include <windows.h>

#include <psapi.h>

#include <memory>

#include <gtest/gtest.h>

#include "host/token/pin.h"

namespace zr::test {
namespace {

bool isLocked(const void* address) {
    PSAPI_WORKING_SET_EX_INFORMATION page = {};
    page.VirtualAddress = const_cast<void*>(address);
    EXPECT_TRUE(K32QueryWorkingSetEx(GetCurrentProcess(), &page, sizeof page));
    return page.VirtualAttributes.Locked != 0;
}

/// Whether the system reports locked pages; Wine does not.
bool isReported() {
    void* const page = VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    EXPECT_TRUE(VirtualLock(page, 4096));
    const bool isThere = isLocked(page);
    VirtualFree(page, 0, MEM_RELEASE);
    return isThere;
}

TEST(PinMemoryTest, PinIsLockedAsLongAsItLives) {
    if (!isReported()) {
        GTEST_SKIP() << "this system does not report locked pages";
    }
    const auto place = std::make_unique<host::Pin>();
    const void* const address = place.get();
    EXPECT_TRUE(isLocked(address));
}

}  // namespace
}  // namespace zr::test
