// The memory that a look-up of many names uses. Linux only: it is read from /proc.
#include <unistd.h>

#include <fstream>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

using ManyNamesTest = ThingTest;

/// The resident memory of the process.
long inUseKiB() {
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

TEST_F(ManyNamesTest, GetIDsOfNamesWithAHugeCountUsesLittleMemory) {
    const long before = inUseKiB();
    ASSERT_LT(0, before);
    Proxy proxies[2];
    for (Proxy& proxy : proxies) {
        proxy.mostIds = 1;
        proxy.onAsked = [before] { EXPECT_GT(256 * 1024, inUseKiB() - before); };
        thing->AddProxyDispatch(&proxy, 0, 1, nullptr);
    }
    LPOLESTR other = const_cast<LPOLESTR>(OLESTR("Other"));
    DISPID id = 0;
    const ConsoleCapture quiet;
    constexpr UINT count = UINT{1} << 28;  // ids of 1 GiB
    EXPECT_HR(E_FAIL, thing->GetIDsOfNames(IID_NULL, &other, count, 0, &id));
    EXPECT_EQ(1, proxies[1].lookUps);
    thing->ClearPDI();
}

}  // namespace
}  // namespace zr::test
