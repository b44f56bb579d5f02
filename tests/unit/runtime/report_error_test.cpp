// The slot for the current error, and the functions that report an error.
#include <gtest/gtest.h>

#include "runtime/error_info.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"

namespace zr::test {
namespace {

class ReportErrorTest : public testing::Test {
protected:
    ~ReportErrorTest() override { ZCLUninitialize(); }

    static IErrorInfo* current() {
        IErrorInfo* info = nullptr;
        EXPECT_HR(S_OK, ZGetErrorInfo(0, &info));
        if (info) {
            info->Release();
        }
        return info;
    }
};

TEST_F(ReportErrorTest, GetErrorInfoTwiceReturnsTheSameError) {
    EXPECT_EQ(1, ZCLInitialize());
    EXPECT_EQ(nullptr, current());
    ICreateErrorInfo* create = nullptr;
    IErrorInfo* info = nullptr;
    ZCreateErrorInfo(&create);
    create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info));
    EXPECT_HR(S_OK, ZSetErrorInfo(5, info));
    EXPECT_EQ(info, current());
    EXPECT_EQ(info, current());
    IErrorInfo* read = nullptr;
    EXPECT_HR(S_OK, ZGetErrorInfo(5, &read));
    EXPECT_EQ(3u, read->Release());
    EXPECT_HR(S_OK, ZSetErrorInfo(0, info));
    EXPECT_HR(S_OK, ZSetErrorInfo(0, nullptr));
    EXPECT_EQ(nullptr, current());
    EXPECT_EQ(1u, info->Release());
    EXPECT_EQ(0u, create->Release());
}

TEST_F(ReportErrorTest, NullOutPointersReturnInvalidArgument) {
    EXPECT_HR(E_INVALIDARG, ZGetErrorInfo(0, nullptr));
    EXPECT_HR(E_INVALIDARG, ZCreateErrorInfo(nullptr));
    EXPECT_HR(E_INVALIDARG, ZProgIDFromCLSID(IID_NULL, nullptr));
    LPOLESTR progId = reinterpret_cast<LPOLESTR>(this);
    EXPECT_HR(S_OK, ZProgIDFromCLSID(IID_NULL, &progId));
    EXPECT_EQ(nullptr, progId);
}

TEST_F(ReportErrorTest, ReportErrorStoresAndThrowsTheError) {
    try {
        ZCLReportError(IID_NULL, OLESTR("what happened"), IID_IDispatch, E_POINTER);
        FAIL() << "nothing was thrown";
    } catch (const _zcl_error& error) {
        EXPECT_HR(E_POINTER, error.m_hr);
        ASSERT_TRUE(error.m_pErrorInfo);
        EXPECT_EQ(nullptr, error.m_pszText);
        EXPECT_EQ(current(), error.m_pErrorInfo);
        GUID guid;
        error.m_pErrorInfo->GetGUID(&guid);
        EXPECT_TRUE(guid == IID_IDispatch);
        const ConsoleCapture console;
        BSTR text = nullptr;
        error.m_pErrorInfo->GetDescription(&text);
        EXPECT_EQ(13u, SysStringLen(text));
    }
    IErrorInfo* info = nullptr;
    ZGetErrorInfo(0, &info);
    EXPECT_EQ(1u, info->Release());
}

TEST_F(ReportErrorTest, ReportErrorUtf8StoresTheConvertedText) {
    const ConsoleCapture console;
    EXPECT_HR(E_INVALIDARG, ZCLReportErrorUTF8(IID_NULL, nullptr, IID_NULL, E_FAIL));
    EXPECT_EQ(nullptr, current());
    EXPECT_THROW(ZCLReportErrorUTF8(IID_NULL, "a\xe2\x82\xac", IID_NULL, E_FAIL), _zcl_error);
    BSTR text = nullptr;
    current()->GetDescription(&text);
    EXPECT_EQ(2u, SysStringLen(text));
}

TEST_F(ReportErrorTest, ReportErrorUtf8PrintsTheLineOfItsConversion) {
    ConsoleCapture console;
    EXPECT_THROW(ZCLReportErrorUTF8(IID_NULL, "a\xe2\x82\xac", IID_NULL, E_FAIL), _zcl_error);
    EXPECT_EQ("_ZSysAllocUTF8String call...[a\xe2\x82\xac]\n", console.stop().out);
}

TEST_F(ReportErrorTest, ReportErrorUtf8WithNullTextReturnsInvalidArgumentAndPrintsNothing) {
    ConsoleCapture console;
    EXPECT_HR(E_INVALIDARG, ZCLReportErrorUTF8(IID_NULL, nullptr, IID_NULL, E_FAIL));
    EXPECT_EQ("", console.stop().out);
}

TEST_F(ReportErrorTest, SetErrorInfoWithTheErrorInTheSlotKeepsIt) {
    EXPECT_THROW(ZCLReportError(IID_NULL, OLESTR("1"), IID_NULL, E_FAIL), _zcl_error);
    IErrorInfo* only = current();
    EXPECT_HR(S_OK, ZSetErrorInfo(0, only));
    EXPECT_EQ(only, current());
    EXPECT_EQ(2u, only->AddRef());
    EXPECT_EQ(1u, only->Release());
}

TEST_F(ReportErrorTest, ReportErrorReplacesTheErrorInTheSlot) {
    EXPECT_THROW(ZCLReportError(IID_NULL, OLESTR("1"), IID_NULL, E_FAIL), _zcl_error);
    EXPECT_THROW(ZCLReportError(IID_NULL, nullptr, IID_NULL, E_FAIL), _zcl_error);
    const ConsoleCapture console;
    BSTR text = reinterpret_cast<BSTR>(this);
    current()->GetDescription(&text);
    EXPECT_EQ(nullptr, text);
    ZCLUninitialize();
    EXPECT_EQ(nullptr, current());
}

TEST_F(ReportErrorTest, CopyOfAnErrorAddsAReferenceAndCopiesTheText) {
    EXPECT_THROW(ZCLReportError(IID_NULL, OLESTR("1"), IID_NULL, E_FAIL), _zcl_error);
    IErrorInfo* info = nullptr;
    ZGetErrorInfo(0, &info);
    {
        _zcl_error error(E_POINTER, info);
        error.m_pszText = new char[5]{'t', 'e', 'x', 't', 0};
        const _zcl_error copy(error);
        EXPECT_HR(E_POINTER, copy.m_hr);
        EXPECT_EQ(info, copy.m_pErrorInfo);
        EXPECT_STREQ("text", copy.m_pszText);
        EXPECT_NE(error.m_pszText, copy.m_pszText);
        EXPECT_EQ(4u, info->AddRef());  // the slot, both errors and this one
        info->Release();
    }
    const _zcl_error empty(E_FAIL, nullptr);
    const _zcl_error copyOfEmpty(empty);
    EXPECT_EQ(nullptr, copyOfEmpty.m_pszText);
    ZCLUninitialize();
}

/// Throws from Release, which no error object should do.
class ThrowingErrorInfo : public ZErrorInfo {
public:
    ULONG STDMETHODCALLTYPE Release() override { throw 1; }
};

TEST_F(ReportErrorTest, ReportErrorWithAnotherExceptionEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto report = [] {
        auto* info = new ThrowingErrorInfo;
        ZSetErrorInfo(0, info);
        try {
            ZCLReportError(IID_NULL, OLESTR("1"), IID_NULL, E_FAIL);
        } catch (...) {
            std::_Exit(0);  // the exception left the function
        }
        std::_Exit(0);
    };
    EXPECT_DEATH(report(), "");
}

}  // namespace
}  // namespace zr::test
