// ZErrorInfo: the error object.
#include "runtime/error_info.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"

namespace zr::test {
namespace {

class ErrorInfoTest : public testing::Test {
protected:
    ErrorInfoTest() {
        EXPECT_HR(S_OK, ZCreateErrorInfo(&create));
        EXPECT_HR(S_OK, create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)));
    }
    ~ErrorInfoTest() override {
        EXPECT_EQ(1u, create->Release());
        EXPECT_EQ(0u, info->Release());
    }

    ICreateErrorInfo* create = nullptr;
    IErrorInfo* info = nullptr;
};

TEST_F(ErrorInfoTest, QueryInterfaceReturnsItsTwoInterfacesOnly) {
    void* face = this;
    EXPECT_HR(E_INVALIDARG, info->QueryInterface(IID_IErrorInfo, nullptr));
    for (const IID& iid : {IID_IUnknown, IID_ISupportErrorInfo, IID_NULL}) {
        face = this;
        EXPECT_HR(E_NOINTERFACE, info->QueryInterface(iid, &face));
        EXPECT_EQ(nullptr, face);
    }
    EXPECT_HR(S_OK, info->QueryInterface(IID_ICreateErrorInfo, &face));
    EXPECT_EQ(create, face);
    EXPECT_EQ(2u, create->Release());
}

TEST_F(ErrorInfoTest, GettersOfANewObjectReturnEmptyValues) {
    GUID guid = IID_IUnknown;
    BSTR text = reinterpret_cast<BSTR>(this);
    DWORD context = 9;
    EXPECT_HR(S_OK, info->GetGUID(&guid));
    EXPECT_TRUE(guid == IID_NULL);
    EXPECT_HR(S_OK, info->GetSource(&text));
    EXPECT_EQ(nullptr, text);
    text = reinterpret_cast<BSTR>(this);
    EXPECT_HR(S_OK, info->GetHelpFile(&text));
    EXPECT_EQ(nullptr, text);
    const ConsoleCapture quiet;
    text = reinterpret_cast<BSTR>(this);
    EXPECT_HR(S_OK, info->GetDescription(&text));
    EXPECT_EQ(nullptr, text);
    EXPECT_HR(S_OK, info->GetHelpContext(&context));
    EXPECT_EQ(0u, context);
}

TEST_F(ErrorInfoTest, GettersWithNullReturnInvalidArgument) {
    const ConsoleCapture quiet;
    EXPECT_HR(E_INVALIDARG, info->GetGUID(nullptr));
    EXPECT_HR(E_INVALIDARG, info->GetSource(nullptr));
    EXPECT_HR(E_INVALIDARG, info->GetDescription(nullptr));
    EXPECT_HR(E_INVALIDARG, info->GetHelpFile(nullptr));
    EXPECT_HR(E_INVALIDARG, info->GetHelpContext(nullptr));
}

TEST_F(ErrorInfoTest, GettersReturnTheStringsWithoutACopy) {
    OLECHAR source[] = OLESTR("source");
    OLECHAR help[] = OLESTR("help");
    EXPECT_HR(S_OK, create->SetGUID(IID_IDispatch));
    EXPECT_HR(S_OK, create->SetSource(source));
    EXPECT_HR(S_OK, create->SetHelpFile(help));
    EXPECT_HR(S_OK, create->SetHelpContext(77));
    GUID guid;
    BSTR first = nullptr;
    BSTR second = nullptr;
    DWORD context = 0;
    info->GetGUID(&guid);
    EXPECT_TRUE(guid == IID_IDispatch);
    info->GetSource(&first);
    info->GetSource(&second);
    EXPECT_EQ(first, second);
    EXPECT_NE(source, first);
    EXPECT_EQ(6u, SysStringLen(first));
    info->GetHelpFile(&second);
    EXPECT_EQ(4u, SysStringLen(second));
    info->GetHelpContext(&context);
    EXPECT_EQ(77u, context);
}

TEST_F(ErrorInfoTest, SetSourceWithNullFailsAndEmptiesTheField) {
    OLECHAR source[] = OLESTR("source");
    create->SetSource(source);
    BSTR before = nullptr;
    info->GetSource(&before);
    EXPECT_HR(E_FAIL, create->SetSource(nullptr));
    BSTR after = before;
    EXPECT_HR(S_OK, info->GetSource(&after));
    EXPECT_EQ(nullptr, after);
    // The string returned before stays valid.
    EXPECT_EQ(6u, SysStringLen(before));
}

TEST_F(ErrorInfoTest, SettersWithNullEmptyTheirOwnFieldOnly) {
    using Set = HRESULT (STDMETHODCALLTYPE ICreateErrorInfo::*)(LPOLESTR);
    using Get = HRESULT (STDMETHODCALLTYPE IErrorInfo::*)(BSTR*);
    const std::pair<Set, Get> fields[] = {
        {&ICreateErrorInfo::SetSource, &IErrorInfo::GetSource},
        {&ICreateErrorInfo::SetDescription, &IErrorInfo::GetDescription},
        {&ICreateErrorInfo::SetHelpFile, &IErrorInfo::GetHelpFile},
    };
    OLECHAR text[] = OLESTR("text");
    const ConsoleCapture quiet;
    for (const auto& emptied : fields) {
        for (const auto& [set, get] : fields) {
            EXPECT_HR(S_OK, (create->*set)(text));
        }
        EXPECT_HR(E_FAIL, (create->*emptied.first)(nullptr));
        for (const auto& [set, get] : fields) {
            BSTR now = nullptr;
            EXPECT_HR(S_OK, (info->*get)(&now));
            EXPECT_EQ(get == emptied.second, now == nullptr);
        }
    }
}

TEST_F(ErrorInfoTest, GetDescriptionWithNullPrintsItsLine) {
    ConsoleCapture console;
    EXPECT_HR(E_INVALIDARG, info->GetDescription(nullptr));
    EXPECT_EQ("[ZErrorInfo::GetDescription] call...\n", console.stop().out);
}

TEST_F(ErrorInfoTest, GetDescriptionPrintsItsLine) {
    OLECHAR description[] = OLESTR("text");
    create->SetDescription(description);
    ConsoleCapture console;
    BSTR text = nullptr;
    EXPECT_HR(S_OK, info->GetDescription(&text));
    EXPECT_EQ("[ZErrorInfo::GetDescription] call...\n", console.stop().out);
    EXPECT_EQ(4u, SysStringLen(text));
}

using Slot = void (*)();

TEST_F(ErrorInfoTest, SlotsAreInOrder) {
    Slot* slots = *reinterpret_cast<Slot**>(info);
    using Context = HRESULT(STDMETHODCALLTYPE*)(void*, DWORD*);
    DWORD context = 5;
    EXPECT_HR(S_OK, reinterpret_cast<Context>(slots[7])(info, &context));
    EXPECT_EQ(0u, context);
    Slot* createSlots = *reinterpret_cast<Slot**>(create);
    using SetContext = HRESULT(STDMETHODCALLTYPE*)(void*, DWORD);
    EXPECT_HR(S_OK, reinterpret_cast<SetContext>(createSlots[7])(create, 12));
    info->GetHelpContext(&context);
    EXPECT_EQ(12u, context);
}

/// Counts how many were destroyed.
class CountedErrorInfo : public ZErrorInfo {
public:
    ~CountedErrorInfo() override { ++s_destroyed; }
    static inline int s_destroyed = 0;
};

TEST_F(ErrorInfoTest, DestructorSlotsFollowTheGetters) {
    using Destructor = void (*)(void*);
    CountedErrorInfo::s_destroyed = 0;
    alignas(CountedErrorInfo) char place[sizeof(CountedErrorInfo)];
    IErrorInfo* complete = new (place) CountedErrorInfo;
    reinterpret_cast<Destructor>((*reinterpret_cast<Slot**>(complete))[8])(complete);
    EXPECT_EQ(1, CountedErrorInfo::s_destroyed);
    IErrorInfo* deleted = new CountedErrorInfo;
    reinterpret_cast<Destructor>((*reinterpret_cast<Slot**>(deleted))[9])(deleted);
    EXPECT_EQ(2, CountedErrorInfo::s_destroyed);
}

}  // namespace
}  // namespace zr::test
