// Which operations of a token call others through the virtual table: a class derived from the token
// can override those.
#include <functional>

#include "pkcs11/token_pkcs11.h"
#include "tests/support/fixtures/foreign_certificate.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

/// Records its operations; returns the result that is set or calls its base.
class WatchedToken : public KeyObject_pkcs11 {
public:
    WatchedToken(TokenProvider* provider, const Session& session, Lines* calls)
        : KeyObject_pkcs11(provider, session), m_calls(*calls) {}

    HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) override {
        m_calls.push_back("VerifyPIN " + narrow(pin) + " " + std::to_string(type));
        return onVerifyPin ? onVerifyPin() : KeyObject_pkcs11::VerifyPIN(pin, type);
    }
    HRESULT STDMETHODCALLTYPE CloseKey() override {
        m_calls.push_back("CloseKey");
        return KeyObject_pkcs11::CloseKey();
    }
    HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) override {
        m_calls.push_back("FileExists " + narrow(name));
        return onFileExists ? onFileExists(result) : KeyObject_pkcs11::FileExists(name, result);
    }
    HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) override {
        m_calls.push_back("OpenFile " + narrow(name));
        return onOpenFile ? onOpenFile() : KeyObject_pkcs11::OpenFile(name, file);
    }
    HRESULT GetPubPriKeyHandle(CK_OBJECT_HANDLE* handle, int publicFlag, ULONG keyType,
                               const char* id) override {
        m_calls.push_back("GetPubPriKeyHandle " + std::to_string(publicFlag) + " " +
                          std::to_string(keyType) + " " + id);
        *handle = 77;
        return S_OK;
    }

    std::function<HRESULT()> onVerifyPin;
    std::function<HRESULT(VARIANT* result)> onFileExists;
    std::function<HRESULT()> onOpenFile;

private:
    Lines& m_calls;
};

class TokenPkcs11OverridesTest : public ModuleTest {
protected:
    TokenPkcs11OverridesTest() {
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
        EXPECT_HR(S_OK, provider->OpenKey(0, m_opened.receive()));
        // The watched token uses the session of the token that the provider opened.
        const auto* opened = static_cast<KeyObject_pkcs11*>(m_opened.get());
        token = makeObject<WatchedToken>(provider.get(), opened->GetSession(), &calls);
        module.takeCalls();
    }

    HRESULT createFile() { return token->CreateFile(Text("9"), 0, 0, 0, 0, &file); }

    Lines calls;  // outlives the token, which writes to it
    ComRef<TokenProvider_pkcs11> provider = makeObject<TokenProvider_pkcs11>();
    ComRef<WatchedToken> token;
    void* file = nullptr;

private:
    ComRef<IKeyObject> m_opened;
};

TEST_F(TokenPkcs11OverridesTest, ModifyPinLogsInThroughVerifyPin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    calls.clear();
    module.takeCalls();
    token->onVerifyPin = [] { return S_OK; };
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("4321"), 1));
    EXPECT_EQ(Lines{"VerifyPIN 1234 1"}, calls);
    EXPECT_EQ((Lines{"C_Logout(1)", "C_SetPIN(1, 1234, 4321)"}), module.takeCalls());
}

TEST_F(TokenPkcs11OverridesTest, ModifyPinFailsWhenVerifyPinFails) {
    token->onVerifyPin = [] { return E_OUTOFMEMORY; };
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("1234"), Text("4321"), 0));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(TokenPkcs11OverridesTest, LastReleaseClosesThroughCloseKey) {
    EXPECT_EQ(0u, token.release()->Release());
    EXPECT_EQ(Lines{"CloseKey"}, calls);
    EXPECT_EQ(Lines{"C_CloseSession(1)"}, module.takeCalls());
}

TEST_F(TokenPkcs11OverridesTest, CreateFileFailsWhenFileExistsFailsWithANumber) {
    token->onFileExists = [](VARIANT* result) {
        result->vt = VT_I4;
        result->lVal = 1;
        return E_FAIL;
    };
    EXPECT_HR(E_FAIL, createFile());
    EXPECT_EQ(Lines{"FileExists 9"}, calls);
    EXPECT_EQ(Lines{}, module.takeCalls());
    EXPECT_EQ(nullptr, file);
}

TEST_F(TokenPkcs11OverridesTest, CreateFileContinuesAfterAnyOtherResultOfFileExists) {
    const std::pair<HRESULT, LONG> answers[] = {{S_OK, 1}, {S_OK, 0}, {E_FAIL, 0}};
    for (const auto& [result, number] : answers) {
        token->onFileExists = [result = result, number = number](VARIANT* exists) {
            exists->vt = VT_I4;
            exists->lVal = number;
            return result;
        };
        EXPECT_HR(S_OK, createFile());
        ASSERT_TRUE(file);
        static_cast<IKeyFile*>(file)->Release();
    }
    EXPECT_EQ(Lines(3, "FileExists 9"), calls);
    EXPECT_EQ(3u, module.count("C_CreateObject"));
    EXPECT_EQ(0u, module.count("C_FindObjectsInit"));
}

TEST_F(TokenPkcs11OverridesTest, DeleteFileFailsWhenOpenFileFails) {
    module.addData("6", "contents");
    token->onOpenFile = [] { return E_FAIL; };
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("7")));
    EXPECT_EQ(Lines{"OpenFile 7"}, calls);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(TokenPkcs11OverridesTest, DeleteFileDestroysTheObjectThatOpenFileFound) {
    const CK_OBJECT_HANDLE object = module.addData("6", "contents");
    EXPECT_HR(S_OK, token->DeleteFile(Text("7")));
    EXPECT_EQ(Lines{"OpenFile 7"}, calls);
    EXPECT_EQ("C_DestroyObject(1, " + std::to_string(object) + ")", module.takeCalls().back());
    token->Release();  // the reference of the file that DeleteFile keeps
}

TEST_F(TokenPkcs11OverridesTest, SignDataAndVerifyDataUseTheKeyOfGetPubPriKeyHandle) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    calls.clear();
    module.takeCalls();
    ForeignCertificate certificate;
    Variant signature;
    EXPECT_HR(S_OK, token->SignData(nullptr, ByteArray("data"), &certificate, signature.receive()));
    EXPECT_HR(S_OK, token->VerifyData(ByteArray("data"), &certificate, nullptr, signature));
    EXPECT_EQ((Lines{"GetPubPriKeyHandle 0 0 a", "GetPubPriKeyHandle 1 0 a"}), calls);
    EXPECT_EQ((Lines{"C_SignInit(1, 6/0, 77)", "C_Sign(1, [data], 1024)",
                     "C_VerifyInit(1, 6/0, 77)", "C_Verify(1, [data], 256)"}),
              module.takeCalls());
}

}  // namespace
}  // namespace zr::test
