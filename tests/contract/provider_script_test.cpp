// A provider without a module, as scripts and plug-in hosts see it.
#include <cstring>
#include <limits>

#include "tests/support/console_capture.h"
#include "tests/support/fixtures/token.h"
#include "tests/support/hresult.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class ProviderScriptTest : public testing::Test {
protected:
    ~ProviderScriptTest() override { EXPECT_EQ(0u, provider.release()->Release()); }

    void expectResult(VARTYPE type, LONGLONG value) const {
        EXPECT_EQ(type, result.vt);
        switch (type) {
            case VT_BOOL:
                EXPECT_EQ(value, result.boolVal);
                break;
            case VT_I4:
                EXPECT_EQ(value, result.lVal);
                break;
            default:
                EXPECT_EQ(value, result.llVal);
        }
    }

    TempDir folder;
    ConsoleCapture console;
    ComRef<ITokenProvider> provider = makeProvider();
    VARIANT result = poisoned();
};

TEST_F(ProviderScriptTest, GetIdsOfNamesKnowsFourMembersByTheirExactNames) {
    EXPECT_EQ(1, idOf(provider.get(), "Load"));
    EXPECT_EQ(2, idOf(provider.get(), "Unload"));
    EXPECT_EQ(3, idOf(provider.get(), "OpenKey"));
    EXPECT_EQ(4, idOf(provider.get(), "GetKeyCount"));
    for (const char* name : {"load", "LOAD", "Load ", "", "GetName", "GetKeySN", "LoadFinish"}) {
        EXPECT_EQ(0, idOf(provider.get(), name)) << name;
    }
}

TEST_F(ProviderScriptTest, LoadWithANumberIsRefusedAndTheResultIsFalse) {
    EXPECT_HR(E_INVALIDARG, invoke(provider.get(), 1, {number(3)}, &result));
    expectResult(VT_BOOL, 0);
}

TEST_F(ProviderScriptTest, LoadOfAMissingFileFailsAndTheResultIsFalse) {
    const Text path("missing.so");
    EXPECT_HR(E_FAIL, invoke(provider.get(), 1, {string(path)}, &result));
    expectResult(VT_BOOL, 0);
}

TEST_F(ProviderScriptTest, UnloadSucceedsWithoutAModule) {
    EXPECT_HR(S_OK, invoke(provider.get(), 2, {}, &result));
    expectResult(VT_BOOL, -1);
}

TEST_F(ProviderScriptTest, OpenKeyFailsWithoutAModule) {
    EXPECT_HR(E_FAIL, invoke(provider.get(), 3, {number(0)}, &result));
    expectResult(VT_DISPATCH, 0);
}

TEST_F(LoadedProviderTest, ScriptOpenKeyReturnsATokenWithOneReference) {
    const ConsoleCapture quiet;
    VARIANT opened = {};
    EXPECT_HR(S_OK, invoke(provider.get(), 3, {number(0)}, &opened));
    ASSERT_EQ(VT_DISPATCH, opened.vt);
    ASSERT_TRUE(opened.pdispVal);
    EXPECT_EQ(3, idOf(opened.pdispVal, "GetLabel"));
    EXPECT_EQ(0u, opened.pdispVal->Release());
}

TEST_F(LoadedProviderTest, ScriptOpenKeyAfterTheSlotsChangedReturnsANullObject) {
    const ConsoleCapture quiet;
    module->settings().slotCountWhenListed = 0;
    VARIANT opened = poisoned();
    EXPECT_HR(S_OK, invoke(provider.get(), 3, {number(0)}, &opened));
    EXPECT_EQ(VT_DISPATCH, opened.vt);
    EXPECT_EQ(nullptr, opened.pdispVal);
}

TEST_F(LoadedProviderTest, ScriptOpenKeyWithAnotherTypeThanANumberOpensTheFirstToken) {
    const ConsoleCapture quiet;
    module->settings().slotCount = module->settings().slotCountWhenListed = 2;
    const Text text("1");
    VARIANT unsignedNumber = {};
    unsignedNumber.vt = VT_UI4;
    unsignedNumber.ulVal = 1;
    // The recording module's slots are numbered from 10.
    const std::pair<VARIANT, const char*> calls[] = {
        {string(text), "C_OpenSession(10,"},
        {unsignedNumber, "C_OpenSession(10,"},
        {number(0), "C_OpenSession(10,"},
        {number(1), "C_OpenSession(11,"},
    };
    for (const auto& [argument, call] : calls) {
        module.takeCalls();
        VARIANT opened = poisoned();
        EXPECT_HR(S_OK, invoke(provider.get(), 3, {argument}, &opened));
        ASSERT_EQ(VT_DISPATCH, opened.vt);
        EXPECT_TRUE(module.takeCalls().back().starts_with(call)) << call;
        EXPECT_EQ(0u, opened.pdispVal->Release());
    }
}

TEST_F(ProviderScriptTest, OpenKeyWithANegativeIndexIsRefused) {
    EXPECT_HR(E_INVALIDARG, invoke(provider.get(), 3, {number(-1)}, &result));
    expectResult(VT_DISPATCH, 0);
}

TEST_F(ProviderScriptTest, OpenKeyWithATextRequestsTheFirstToken) {
    const Text text("-1");
    EXPECT_HR(E_FAIL, invoke(provider.get(), 3, {string(text)}, &result));
    expectResult(VT_DISPATCH, 0);
}

TEST_F(ProviderScriptTest, GetKeyCountFailsWithoutAModule) {
    EXPECT_HR(E_FAIL, invoke(provider.get(), 4, {}, &result));
    expectResult(VT_I4, 0);
}

TEST_F(ProviderScriptTest, InvokeWithAWrongNumberOfArgumentsIsRefused) {
    const Text path("x");
    const struct {
        DISPID id;
        std::vector<VARIANT> arguments;
        VARTYPE type;
    } cases[] = {
        {1, {}, VT_BOOL},
        {1, {string(path), string(path)}, VT_BOOL},
        {2, {number(1)}, VT_BOOL},
        {3, {}, VT_DISPATCH},
        {3, {number(0), number(0)}, VT_DISPATCH},
        {4, {number(1)}, VT_I4},
        {4, std::vector<VARIANT>(10000, number(1)), VT_I4},
    };
    for (const auto& entry : cases) {
        result = poisoned();
        EXPECT_HR(E_INVALIDARG, invoke(provider.get(), entry.id, entry.arguments, &result));
        expectResult(entry.type, 0);
    }
}

TEST_F(ProviderScriptTest, InvokeWithoutAResultIsRefused) {
    EXCEPINFO excep = {};
    DISPPARAMS params = {};
    EXPECT_HR(E_INVALIDARG, provider->Invoke(4, IID_NULL, 0, 1, &params, nullptr, &excep, nullptr));
}

TEST_F(ProviderScriptTest, FailedInvokeLeavesTheExceptionRecordAndTheArgumentIndex) {
    const Text path("missing.so");
    VARIANT argument = string(path);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    EXCEPINFO poison;
    std::memset(&poison, 0x5A, sizeof poison);
    EXCEPINFO excep = poison;
    UINT argErr = 0x5A5A5A5A;
    EXPECT_HR(E_FAIL, provider->Invoke(1, IID_NULL, 0, 1, &params, &result, &excep, &argErr));
    EXPECT_EQ(0, std::memcmp(&poison, &excep, sizeof poison));
    EXPECT_EQ(0x5A5A5A5Au, argErr);
}

TEST_F(ProviderScriptTest, InvokeWithoutParametersFailsAndEmptiesTheResult) {
    EXPECT_HR(E_FAIL, provider->Invoke(4, IID_NULL, 0, 1, nullptr, &result, nullptr, nullptr));
    EXPECT_EQ(VT_EMPTY, result.vt);
}

TEST_F(ProviderScriptTest, InvokeOfAnIdBelowOneIsRefusedAndLeavesTheResult) {
    for (const DISPID id : {std::numeric_limits<DISPID>::min(), DISPID{-1}, DISPID{0}}) {
        result = poisoned();
        EXPECT_HR(E_INVALIDARG, invoke(provider.get(), id, {}, &result));
        EXPECT_EQ(VT_UI1, result.vt);
    }
}

TEST_F(ProviderScriptTest, InvokeOfAnUnknownIdFailsAndEmptiesTheResult) {
    for (const DISPID id : {DISPID{5}, DISPID{1000}, std::numeric_limits<DISPID>::max()}) {
        result = poisoned();
        EXPECT_HR(E_FAIL, invoke(provider.get(), id, {number(1)}, &result));
        EXPECT_EQ(VT_EMPTY, result.vt);
    }
}

TEST_F(ProviderScriptTest, InvokeWithoutParametersAndResultSucceedsForMethodsOnly) {
    const auto probe = [this](DISPID id, WORD flags) {
        return provider->Invoke(id, IID_NULL, 0, flags, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_HR(S_OK, probe(1, DISPATCH_METHOD));
    EXPECT_HR(E_FAIL, probe(1, DISPATCH_PROPERTYGET));
    EXPECT_HR(E_FAIL, probe(1, DISPATCH_PROPERTYPUT));
    EXPECT_HR(E_FAIL, probe(1, DISPATCH_METHOD | DISPATCH_PROPERTYGET));
    EXPECT_HR(E_FAIL, probe(5, DISPATCH_METHOD));
}

TEST_F(ProviderScriptTest, GetIdsOfNamesPrintsEachStep) {
    console.stop();
    ConsoleCapture lookUp;
    EXPECT_EQ(1, idOf(provider.get(), "Load"));
    EXPECT_EQ(0, idOf(provider.get(), "load"));
    EXPECT_EQ(
        "[ZComponentImpl::GetIDsOfNames] call in...\n"
        "[ZComponentImpl::GetIDsOfNames] lpszName = [Load] ...\n"
        "[ZComponentImpl::GetIDsOfNames] pre proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] self...\n"
        "[ZComponentImpl::GetIDsOfNames] *rgdispid = [1] ...\n"
        "[ZComponentImpl::GetIDsOfNames] call in...\n"
        "[ZComponentImpl::GetIDsOfNames] lpszName = [load] ...\n"
        "[ZComponentImpl::GetIDsOfNames] pre proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] self...\n"
        "[ZComponentImpl::GetIDsOfNames] Last Proxy...\n",
        lookUp.stop().out);
}

TEST_F(ProviderScriptTest, InvokePrintsEachStep) {
    console.stop();
    ConsoleCapture call;
    invoke(provider.get(), 2, {}, &result);
    invoke(provider.get(), 9, {}, &result);
    invoke(provider.get(), 0, {}, &result);
    const auto text = call.stop();
    EXPECT_EQ(
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::Invoke] call end...\n"
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::Invoke] argument error...\n",
        text.out);
    EXPECT_EQ("GetDipatchInfo() fail\n", text.error);
}

TEST_F(ProviderScriptTest, QueryInterfaceOfTheProviderReturnsItAndNotImplemented) {
    void* object = nullptr;
    EXPECT_HR(E_NOTIMPL, provider->QueryInterface(IID_ITokenProvider, &object));
    EXPECT_EQ(provider.get(), object);
    EXPECT_EQ(2u, provider->AddRef());
    EXPECT_EQ(1u, provider->Release());
    EXPECT_HR(E_INVALIDARG, provider->QueryInterface(IID_ITokenProvider, nullptr));
}

TEST_F(ProviderScriptTest, QueryInterfaceOfAnotherInterfaceFailsAndLeavesThePointer) {
    for (const GUID& riid : {IID_IUnknown, IID_IDispatch, IID_IKeyObject, IID_NULL}) {
        void* object = this;
        EXPECT_HR(E_NOTIMPL, provider->QueryInterface(riid, &object));
        EXPECT_EQ(this, object);
        EXPECT_HR(E_INVALIDARG, provider->QueryInterface(riid, nullptr));
    }
    EXPECT_EQ(2u, provider->AddRef());
    EXPECT_EQ(1u, provider->Release());
}

TEST_F(ProviderScriptTest, QueryInterfaceOfTheErrorInformationInterfaceAddsAReference) {
    ComRef<ISupportErrorInfo> face;
    EXPECT_HR(S_OK, provider->QueryInterface(IID_ISupportErrorInfo, face.receive()));
    ASSERT_TRUE(face);
    EXPECT_EQ(3u, provider->AddRef());
    EXPECT_EQ(2u, provider->Release());
    EXPECT_HR(S_OK, face->InterfaceSupportsErrorInfo(IID_ITokenProvider));
    EXPECT_EQ(1u, face.release()->Release());
}

TEST_F(ProviderScriptTest, OperationsWithoutAModuleReturnTheirResults) {
    Text name;
    EXPECT_HR(S_OK, provider->GetName(name.receive()));
    EXPECT_EQ(7u, SysStringLen(name));
    EXPECT_EQ(0, std::char_traits<OLECHAR>::compare(name, OLESTR("PKCS#11"), 8));
    EXPECT_HR(E_INVALIDARG, provider->GetName(nullptr));

    BSTR serial = reinterpret_cast<BSTR>(this);
    EXPECT_HR(S_OK, provider->GetKeySN(0, &serial));
    EXPECT_EQ(reinterpret_cast<BSTR>(this), serial);

    EXPECT_HR(E_NOTIMPL, provider->LoadFinish(nullptr));
    EXPECT_HR(E_INVALIDARG, provider->GetKeyCount(nullptr));
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(0, nullptr));
    void* key = this;
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(-1, &key));
    EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    EXPECT_EQ(this, key);
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_HR(S_OK, provider->Unload());
}

TEST_F(ProviderScriptTest, LoadOfAPathWithoutALibraryFails) {
    folder.write("text.so", "no library\n");
    const std::string paths[] = {
        "", ".", "..", "text.so", "missing/x.so", std::string(259, 'a'), std::string(100000, 'a')};
    for (const std::string& path : paths) {
        EXPECT_HR(E_FAIL, provider->Load(Text(path))) << path.substr(0, 20);
    }
    EXPECT_HR(E_FAIL, provider->Load(nullptr));
    const OLECHAR lone[] = {0xD800, 'x', 0xDC00, 0};
    EXPECT_HR(E_FAIL, provider->Load(Text(lone)));
}

}  // namespace
}  // namespace zr::test
