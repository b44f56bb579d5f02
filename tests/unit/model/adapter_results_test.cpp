// The results of members that are called by name.
#include "tests/support/fixtures/objects.h"

namespace zr::test {
namespace {

class AdapterResultsTest : public ObjectsTest {
protected:
    ~AdapterResultsTest() override { VariantClear(&result); }

    /// Calls a member by its name and stores its result.
    HRESULT call(IDispatch* object, const char* name, std::vector<VARIANT> arguments = {}) {
        VariantClear(&result);
        return invoke(object, idOf(object, name), std::move(arguments), &result);
    }

    IDispatch* tokenFace() { return static_cast<IKeyObject*>(token); }
    IDispatch* providerFace() { return static_cast<ITokenProvider*>(provider); }

    VARIANT result = {};
};

TEST_F(AdapterResultsTest, TextGettersReturnTheTextsOfTheToken) {
    const std::pair<const char*, const char*> texts[] = {
        {"GetDigestMethod", "MD5"},
        {"GetSignAlgo", "RSA"},
    };
    for (const auto& [name, text] : texts) {
        EXPECT_HR(S_OK, call(tokenFace(), name));
        ASSERT_EQ(VT_BSTR, result.vt) << name;
        EXPECT_EQ(text, narrow(result.bstrVal)) << name;
    }
    using Getter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(BSTR*);
    const std::pair<const char*, Getter> getters[] = {
        {"GetSerialNumber", &IKeyObject::GetSerialNumber},
        {"GetLabel", &IKeyObject::GetLabel},
        {"GetManufacturerID", &IKeyObject::GetManufacturerID},
        {"GetModelID", &IKeyObject::GetModelID},
    };
    for (const auto& [name, getter] : getters) {
        BSTR text = nullptr;
        EXPECT_HR(S_OK, (static_cast<IKeyObject*>(token)->*getter)(&text));
        EXPECT_HR(S_OK, call(tokenFace(), name));
        EXPECT_EQ(narrow(text), narrow(result.bstrVal)) << name;
        EXPECT_LT(0u, SysStringLen(text)) << name;
        SysFreeString(text);
    }
}

TEST_F(AdapterResultsTest, PinOperationsPassTheirArgumentsAndReturnTrue) {
    const Text pin("1234");
    EXPECT_HR(S_OK, call(tokenFace(), "VerifyPIN", {string(pin), number(0)}));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(VARIANT_TRUE, result.boolVal);
    EXPECT_EQ(Lines{"C_Login(1, 1, 1234)"}, Lines{module.takeCalls().back()});
    EXPECT_HR(E_INVALIDARG, call(tokenFace(), "VerifyPIN", {string(pin), number(2)}));
    EXPECT_HR(S_OK, call(tokenFace(), "UnlockPIN", {string(pin), string(pin)}));
    EXPECT_EQ(VARIANT_TRUE, result.boolVal);
    EXPECT_HR(E_INVALIDARG, call(tokenFace(), "UnlockPIN", {string(pin), number(1)}));
    EXPECT_HR(E_INVALIDARG, call(tokenFace(), "UnlockPIN", {number(1), string(pin)}));
    const Text there("7");
    EXPECT_HR(S_OK, call(tokenFace(), "FileExists", {string(there)}));
    EXPECT_EQ(VT_I4, result.vt);
    EXPECT_EQ(1, result.lVal);
    EXPECT_HR(E_NOTIMPL, call(tokenFace(), "IsDefaultPIN", {number(0)}));
}

TEST_F(AdapterResultsTest, VerifyPinWithoutATypeLogsTheUserIn) {
    const Text pin("1234");
    EXPECT_HR(S_OK, call(tokenFace(), "VerifyPIN", {string(pin)}));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(VARIANT_TRUE, result.boolVal);
    EXPECT_EQ((Lines{"C_Login(1, 1, 1234)", "C_Logout(1)", "C_Login(1, 1, 1234)"}),
              module.takeCalls());
}

TEST_F(AdapterResultsTest, VerifyPinWithoutArgumentsReturnsInvalidArgument) {
    EXPECT_HR(E_INVALIDARG, call(tokenFace(), "VerifyPIN"));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(VARIANT_FALSE, result.boolVal);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(AdapterResultsTest, TypedGettersWithoutATypeCallTheToken) {
    for (const char* name : {"GetMaxRetryCount", "GetRemainRetryCount", "IsDefaultPIN"}) {
        EXPECT_HR(E_NOTIMPL, call(tokenFace(), name)) << name;
    }
}

TEST_F(AdapterResultsTest, SizesAndCountsAreThoseOfTheModule) {
    module->settings().tokenInfo.ulTotalPublicMemory = 7001;
    module->settings().tokenInfo.ulFreePublicMemory = 7002;
    EXPECT_HR(S_OK, call(tokenFace(), "GetTotalSize"));
    EXPECT_EQ(7001u, result.ulVal);
    EXPECT_HR(S_OK, call(tokenFace(), "GetFreeSize"));
    EXPECT_EQ(7002u, result.ulVal);
    module->settings().slotCount = 3;
    EXPECT_HR(S_OK, call(providerFace(), "GetKeyCount"));
    EXPECT_EQ(VT_I4, result.vt);
    EXPECT_EQ(3, result.lVal);
}

TEST_F(AdapterResultsTest, ObjectsAreReturnedWithAReference) {
    EXPECT_HR(S_OK, call(providerFace(), "OpenKey", {number(0)}));
    ASSERT_EQ(VT_DISPATCH, result.vt);
    EXPECT_EQ(3, idOf(result.pdispVal, "GetLabel"));
    IDispatch* containerFace = static_cast<IKeyContainer*>(container);
    EXPECT_HR(S_OK, call(containerFace, "GetKeyCert", {number(1)}));
    ASSERT_EQ(VT_DISPATCH, result.vt);
    IDispatch* certificateFace = result.pdispVal;
    certificateFace->AddRef();
    EXPECT_HR(S_OK, call(certificateFace, "GetCertID"));
    ASSERT_EQ(VT_BSTR, result.vt);
    EXPECT_EQ("id", narrow(result.bstrVal));
    EXPECT_HR(S_OK, call(certificateFace, "GetCertData"));
    EXPECT_EQ("certificate", takeBytes(&result));
    EXPECT_EQ(0u, certificateFace->Release());
}

TEST_F(AdapterResultsTest, GetPubPriKeyHandleFindsAKeyByClassAndId) {
    const CK_OBJECT_HANDLE privateKey = module.addKey(CKO_PRIVATE_KEY, "k");
    const CK_OBJECT_HANDLE publicKey = module.addKey(CKO_PUBLIC_KEY, "k");
    CK_OBJECT_HANDLE found = 0;
    EXPECT_HR(S_OK, token->GetPubPriKeyHandle(&found, 0, CKK_RSA, "k"));
    EXPECT_EQ(privateKey, found);
    EXPECT_HR(S_OK, token->GetPubPriKeyHandle(&found, 1, CKK_RSA, "k"));
    EXPECT_EQ(publicKey, found);
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(&found, 1, CKK_RSA, "none"));
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(&found, 1, CKK_RSA, nullptr));
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(nullptr, 1, CKK_RSA, "k"));
}

}  // namespace
}  // namespace zr::test
