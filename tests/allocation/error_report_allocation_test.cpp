// The error service, once for each allocation that it makes, with that one failing.
#include "runtime/error_info.h"
#include "tests/allocation/fail_each.h"
#include "tests/support/hresult.h"

namespace zr::test {
namespace {

/// The result of a report, thrown or answered.
template <class Report>
HRESULT outcomeOf(Report report, bool* isThrown) {
    *isThrown = false;
    try {
        return report();
    } catch (const _zcl_error& error) {
        *isThrown = true;
        return error.m_hr;
    }
}

TEST(ErrorReportAllocationTest, AnErrorObjectIsMadeWholeOrNotAtAll) {
    failEach([](const Allocations& allocations) {
        ICreateErrorInfo* create = nullptr;
        const HRESULT hr = ZCreateErrorInfo(&create);
        EXPECT_EQ(allocations.hasFailed() ? E_OUTOFMEMORY : S_OK, hr);
        EXPECT_EQ(SUCCEEDED(hr), create != nullptr);
        if (create) {
            create->Release();
        }
    });
}

TEST(ErrorReportAllocationTest, AStringThatCannotBeReplacedLeavesNone) {
    OLECHAR first[] = OLESTR("first");
    OLECHAR second[] = OLESTR("second");
    failEach([&](const Allocations& allocations) {
        auto* info = new (std::nothrow) ZErrorInfo();
        if (!info) {
            return;
        }
        info->AddRef();
        for (OLECHAR* text : {first, second}) {
            const bool hadFailed = allocations.hasFailed();
            const HRESULT hr = info->SetDescription(text);
            EXPECT_EQ(allocations.hasFailed() && !hadFailed ? E_FAIL : S_OK, hr);
            BSTR description = nullptr;
            info->GetDescription(&description);
            EXPECT_EQ(SUCCEEDED(hr), description != nullptr);
        }
        info->Release();
    });
}

TEST(ErrorReportAllocationTest, AReportIsThrownOrAnswered) {
    failEach([](const Allocations& allocations) {
        bool isThrown = false;
        const HRESULT hr = outcomeOf(
            [] { return ZCLReportErrorUTF8(IID_NULL, "what happened", IID_NULL, E_POINTER); },
            &isThrown);
        // An error whose description cannot be copied is thrown without it.
        EXPECT_EQ(isThrown ? E_POINTER : hr, hr);
        EXPECT_TRUE(isThrown || hr == E_FAIL || hr == DISP_E_EXCEPTION) << hr;
        EXPECT_TRUE(isThrown || allocations.hasFailed());
        ZCLUninitialize();
    });
}

}  // namespace
}  // namespace zr::test
