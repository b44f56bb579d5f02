// What a look-up of many names costs. Linux only: the memory in use is counted in its own way.
#include <sys/resource.h>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

/// The most memory that the process has had in use.
long peakKiB() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

using ManyNamesTest = ThingTest;

TEST_F(ManyNamesTest, ACountOfNamesTakesNoMoreMemoryThanIsWritten) {
    Proxy proxies[2];
    for (Proxy& proxy : proxies) {
        proxy.mostIds = 1;
        thing->AddProxyDispatch(&proxy, 0, 1, nullptr);
    }
    LPOLESTR other = const_cast<LPOLESTR>(OLESTR("Other"));
    DISPID id = 0;
    const ConsoleCapture quiet;
    const long before = peakKiB();
    constexpr UINT count = UINT{1} << 28;  // ids of 1 GiB
    EXPECT_HR(E_FAIL, thing->GetIDsOfNames(IID_NULL, &other, count, 0, &id));
    // A sanitizer marks an eighth as much.
    EXPECT_GT(256 * 1024, peakKiB() - before);
    EXPECT_EQ(1, proxies[1].lookUps);
    thing->ClearPDI();
}

}  // namespace
}  // namespace zr::test
