// Token information, and operations that this backend does not implement.
#include <cstring>

#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class TokenInfoTest : public TokenTest {
protected:
    using Getter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(BSTR*);

    std::string read(Getter getter) {
        Text text;
        EXPECT_HR(S_OK, (token.get()->*getter)(text.receive()));
        return narrow(text);
    }

    template <std::size_t Size>
    static void set(CK_BYTE (&field)[Size], const std::string& bytes) {
        std::memset(field, ' ', Size);
        std::memcpy(field, bytes.data(), bytes.size());
    }
};

TEST_F(TokenInfoTest, TextGettersReadTheSlotOfTheToken) {
    EXPECT_EQ("0123456789", read(&IKeyObject::GetSerialNumber));
    EXPECT_EQ("Recording Token", read(&IKeyObject::GetLabel));
    EXPECT_EQ("Test Maker", read(&IKeyObject::GetManufacturerID));
    EXPECT_EQ("Model 1", read(&IKeyObject::GetModelID));
    EXPECT_EQ(Lines(4, "C_GetTokenInfo(10)"), module.takeCalls());
}

TEST_F(TokenInfoTest, TextGettersRemoveBlanksAndZerosAtTheEnd) {
    auto& info = module->settings().tokenInfo;
    set(info.label, "abc");
    EXPECT_EQ("abc", read(&IKeyObject::GetLabel));
    set(info.label, std::string(" a b \0 \0", 8));
    EXPECT_EQ(" a b", read(&IKeyObject::GetLabel));
}

TEST_F(TokenInfoTest, TextGettersReadFullAndEmptyFields) {
    auto& info = module->settings().tokenInfo;
    set(info.label, std::string(32, 'L'));
    set(info.manufacturerID, std::string(32, 'M'));
    set(info.model, std::string(16, 'm'));
    set(info.serialNumber, std::string(16, 's'));
    EXPECT_EQ(std::string(32, 'L'), read(&IKeyObject::GetLabel));
    EXPECT_EQ(std::string(32, 'M'), read(&IKeyObject::GetManufacturerID));
    EXPECT_EQ(std::string(16, 'm'), read(&IKeyObject::GetModelID));
    EXPECT_EQ(std::string(16, 's'), read(&IKeyObject::GetSerialNumber));
    set(info.label, "");
    set(info.model, std::string(16, '\0'));
    EXPECT_EQ("", read(&IKeyObject::GetLabel));
    EXPECT_EQ("", read(&IKeyObject::GetModelID));
}

TEST_F(TokenInfoTest, FailedTextGettersLeaveTheString) {
    module->fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED);
    for (const Getter getter : {&IKeyObject::GetSerialNumber, &IKeyObject::GetLabel,
                                &IKeyObject::GetManufacturerID, &IKeyObject::GetModelID}) {
        BSTR text = reinterpret_cast<BSTR>(this);
        EXPECT_HR(E_FAIL, (token.get()->*getter)(&text));
        EXPECT_EQ(reinterpret_cast<BSTR>(this), text);
        EXPECT_HR(E_INVALIDARG, (token.get()->*getter)(nullptr));
    }
}

TEST_F(TokenInfoTest, SizeGettersReturnThePublicMemory) {
    VARIANT size = {};
    EXPECT_HR(S_OK, token->GetTotalSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(65536u, size.ulVal);
    EXPECT_HR(S_OK, token->GetFreeSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(4096u, size.ulVal);
    EXPECT_HR(E_INVALIDARG, token->GetTotalSize(nullptr));
    EXPECT_HR(E_INVALIDARG, token->GetFreeSize(nullptr));
}

TEST_F(TokenInfoTest, SizeGettersReturnAnUnknownSizeUnchanged) {
    module->settings().tokenInfo.ulTotalPublicMemory = CK_UNAVAILABLE_INFORMATION;
    VARIANT size = {};
    EXPECT_HR(S_OK, token->GetTotalSize(&size));
    EXPECT_EQ(0xFFFFFFFFu, size.ulVal);
    module->fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED);
    size = poisoned();
    EXPECT_HR(E_FAIL, token->GetTotalSize(&size));
    EXPECT_HR(E_FAIL, token->GetFreeSize(&size));
    EXPECT_EQ(VT_UI1, size.vt);
}

TEST_F(TokenInfoTest, SizeGettersClearTheVariantFirst) {
    for (const auto getter : {&IKeyObject::GetTotalSize, &IKeyObject::GetFreeSize}) {
        const ULONG references = provider->AddRef();
        VARIANT size = {};
        size.vt = VT_DISPATCH;
        size.pdispVal = provider.get();
        EXPECT_HR(S_OK, (token.get()->*getter)(&size));
        EXPECT_EQ(VT_UI4, size.vt);
        EXPECT_EQ(references, provider->AddRef());
        provider->Release();
        size.vt = 0xFFF;  // no variant type
        EXPECT_HR(DISP_E_BADVARTYPE, (token.get()->*getter)(&size));
        EXPECT_EQ(0xFFF, size.vt);
    }
}

TEST_F(TokenInfoTest, UnimplementedOperationsLeaveTheirResults) {
    VARIANT result = poisoned();
    EXPECT_HR(E_NOTIMPL, token->SetLabel(nullptr, &result));
    EXPECT_HR(E_NOTIMPL, token->GetMaxRetryCount(0, &result));
    EXPECT_HR(E_NOTIMPL, token->GetRemainRetryCount(0, &result));
    EXPECT_HR(E_NOTIMPL, token->IsDefaultPIN(0, &result));
    EXPECT_HR(E_NOTIMPL, token->Lock(&result));
    EXPECT_HR(E_NOTIMPL, token->Unlock(&result));
    EXPECT_HR(E_NOTIMPL, token->EnumFiles(&result));
    EXPECT_HR(E_NOTIMPL, token->CreateContainer(nullptr, nullptr));
    EXPECT_HR(E_NOTIMPL, token->DeleteContainer(result));
    EXPECT_HR(E_NOTIMPL, token->GetZRHardApiInfo(nullptr, nullptr));
    EXPECT_EQ(VT_UI1, result.vt);
    BSTR text = reinterpret_cast<BSTR>(this);
    EXPECT_HR(S_OK, token->GetKeyObjectClassName(&text));
    EXPECT_HR(S_OK, token->GetCaLibPath(&text));
    EXPECT_HR(S_OK, token->GetCSPName(&text));
    EXPECT_EQ(reinterpret_cast<BSTR>(this), text);
    EXPECT_HR(S_OK, token->UnlockPIN(nullptr, nullptr));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenInfoTest, ScriptsFind30Members) {
    const ConsoleCapture console;
    const char* names[] = {"GetSerialNumber",  "SetLabel",
                           "GetLabel",         "GetManufacturerID",
                           "GetModelID",       "GetTotalSize",
                           "GetFreeSize",      "ModifyPIN",
                           "GetMaxRetryCount", "GetRemainRetryCount",
                           "IsDefaultPIN",     "VerifyPIN",
                           "UnlockPIN",        "Lock",
                           "Unlock",           "CreateFile",
                           "FileExists",       "OpenFile",
                           "EnumFiles",        "DeleteFile",
                           "GetDigestMethod",  "DigestData",
                           "CreateContainer",  "GetContainerCount",
                           "OpenContainer",    "DeleteContainer",
                           "EnumContainer",    "SignData",
                           "VerifyData",       "GetSignAlgo"};
    DISPID expected = 0;
    for (const char* name : names) {
        EXPECT_EQ(++expected, idOf(token.get(), name)) << name;
    }
    EXPECT_EQ(30, expected);
    for (const char* name : {"GetCertData", "GetPubKeyData", "CloseKey", "GetAlgoList"}) {
        EXPECT_EQ(0, idOf(token.get(), name)) << name;
    }
}

TEST_F(TokenInfoTest, ScriptCallsOfUncallableMembersFailWithoutACall) {
    const ConsoleCapture console;
    for (const DISPID id : {2, 8, 16, 18, 19, 20, 22, 23, 24, 25, 26, 27, 28, 29}) {
        VARIANT result = poisoned();
        EXPECT_HR(E_FAIL, invoke(token.get(), id, {}, &result)) << id;
        EXPECT_EQ(VT_EMPTY, result.vt);
    }
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenInfoTest, ScriptsReadTextsAndSizes) {
    const ConsoleCapture console;
    Variant result;
    for (const DISPID id : {1, 3, 4, 5, 21, 30}) {
        EXPECT_HR(S_OK, invoke(token.get(), id, {number(1)}, result.receive())) << id;
        EXPECT_EQ(VT_BSTR, result.type()) << id;
    }
    for (const DISPID id : {6, 7}) {
        EXPECT_HR(S_OK, invoke(token.get(), id, {}, result.receive()));
        EXPECT_EQ(VT_UI4, result.type());
    }
    for (const DISPID id : {9, 10, 11, 14, 15}) {
        EXPECT_HR(E_NOTIMPL, invoke(token.get(), id, {number(0)}, result.receive())) << id;
    }
}

TEST_F(TokenInfoTest, ScriptTextGetterWithoutAResultSucceeds) {
    const ConsoleCapture console;
    EXCEPINFO excep = {};
    DISPPARAMS params = {};
    EXPECT_HR(S_OK, token->Invoke(3, IID_NULL, 0, 1, &params, nullptr, &excep, nullptr));
}

TEST_F(ModuleTest, TokenLogsCreationAndRelease) {
    folder.enableLog();
    ComRef<ITokenProvider> provider = makeProvider();
    provider->Load(Text(module.path()));
    ComRef<IKeyObject> token;
    const std::size_t before = readLogLines(folder.home()).size();
    provider->OpenKey(0, token.receive());
    Text text;
    token->GetLabel(text.receive());
    token->SetLabel(nullptr, nullptr);
    token->VerifyPIN(nullptr, 2);
    token.reset();
    Lines lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ((Lines{
                  "[OpenKey] Begin",
                  "[AddRef] [TokenProvider::AddRef] count=2",
                  "[KeyObject_pkcs11] Begin",
                  "[KeyObject_pkcs11] End",
                  "[SetSlotID] Begin",
                  "[SetSlotID] End",
                  "[SetApplication] Begin",
                  "[SetApplication] End",
                  "[SethSession] Begin",
                  "[SethSession] End",
                  "[SetAlgoList] KeyObject_pkcs11::m_szAlgoList=[RSA]",
                  "[SetDigestList] KeyObject_pkcs11::m_szDigestList=[MD5]",
                  "[AddRef] [KeyObject::AddRef] call...1",
                  "[OpenKey] End",
                  "[GetLabel] Begin",
                  "[GetLabel] End",
                  "[SetLabel] Begin",
                  "[SetLabel] End",
                  "[VerifyPIN] Begin",
                  "[Release] [KeyObject::Release] call...",
                  "[FinalRelease] Begin",
                  "[CloseKey] Begin",
                  "[CloseKey] End",
                  "[FinalRelease] End",
                  "[~KeyObject_pkcs11] Begin",
                  "[~KeyObject_pkcs11] End",
                  "[Release] [TokenProvider::Release] call...",
                  "[Release] [TokenProvider::Release] count=1",
                  "[Release] [KeyObject::Release] count=0",
              }),
              lines);
}

TEST_F(TokenInfoTest, FailedScriptTextGetterLeavesTheResultEmpty) {
    const ConsoleCapture console;
    module->fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED);
    VARIANT result = poisoned();
    EXPECT_HR(E_FAIL, invoke(token.get(), idOf(token.get(), "GetLabel"), {}, &result));
    EXPECT_EQ(VT_EMPTY, result.vt);
}

}  // namespace
}  // namespace zr::test
