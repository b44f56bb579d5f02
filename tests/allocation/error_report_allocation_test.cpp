// The error service while each of its allocations fails in turn.
#include "runtime/error_info.h"

#include <string>

#include "tests/allocation/fail_each.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"

namespace zr::test {
namespace {

/// The result of a report, thrown or returned.
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

TEST(ErrorReportAllocationTest, CreateErrorInfoOutOfMemoryReturnsNoObject) {
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

TEST(ErrorReportAllocationTest, SetDescriptionOutOfMemoryRemovesTheDescription) {
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

/// How many reports with a failed allocation had each outcome.
struct Outcomes {
    int withoutText = 0;
    int withoutObject = 0;
    int thrown = 0;
};

/// Repeats a report while each of its allocations fails in turn. A report makes the text first,
/// then the object, then throws.
template <class Report>
Outcomes reportEach(Report report) {
    Outcomes outcomes;
    failEach([&](const Allocations& allocations) {
        bool isThrown = false;
        const HRESULT hr = outcomeOf(report, &isThrown);
        if (isThrown) {
            EXPECT_HR(E_POINTER, hr);
            outcomes.thrown += allocations.hasFailed();
        } else if (hr == E_FAIL) {
            EXPECT_EQ(0, outcomes.withoutObject);
            EXPECT_TRUE(allocations.hasFailed());
            ++outcomes.withoutText;
        } else {
            EXPECT_HR(DISP_E_EXCEPTION, hr);
            EXPECT_EQ(0, outcomes.thrown);
            EXPECT_TRUE(allocations.hasFailed());
            ++outcomes.withoutObject;
        }
        IErrorInfo* current = nullptr;
        ZGetErrorInfo(0, &current);
        EXPECT_EQ(isThrown, current != nullptr);
        if (current) {
            current->Release();
        }
        ZCLUninitialize();
    });
    return outcomes;
}

constexpr int kRunsOfEach = 2;

TEST(ErrorReportAllocationTest, ReportErrorOutOfMemoryForTheObjectReturnsACodeAndOtherwiseThrows) {
    const Outcomes outcomes =
        reportEach([] { return ZCLReportError(IID_NULL, OLESTR("text"), IID_NULL, E_POINTER); });
    EXPECT_EQ(0, outcomes.withoutText);
    EXPECT_EQ(kRunsOfEach, outcomes.withoutObject);
    EXPECT_LE(kRunsOfEach * 2, outcomes.thrown);  // only the description is lost
}

TEST(ErrorReportAllocationTest, ReportErrorUtf8OutOfMemoryForTheTextReturnsACode) {
    const ConsoleCapture quiet;
    // Shorter text is converted without an allocation.
    const std::string text(200, 't');
    const Outcomes outcomes =
        reportEach([&] { return ZCLReportErrorUTF8(IID_NULL, text.c_str(), IID_NULL, E_POINTER); });
    EXPECT_LE(kRunsOfEach * 2, outcomes.withoutText);
    EXPECT_EQ(kRunsOfEach, outcomes.withoutObject);
    EXPECT_LE(kRunsOfEach * 2, outcomes.thrown);
}

}  // namespace
}  // namespace zr::test
