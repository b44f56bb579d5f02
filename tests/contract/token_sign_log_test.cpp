// What signing, verifying and the reading of a public key write to the log.
#include "tests/contract/token_log.h"

namespace zr::test {
namespace {

class TokenSignLogTest : public TokenLogTest {
protected:
    TokenSignLogTest() {
        module.addCertificate("a", "A");
        module.addCertificate("", "B");
        privateKey = module.addKey(CKO_PRIVATE_KEY, "a");
        publicKey = module.addKey(CKO_PUBLIC_KEY, "a");
        certificate = certificateOf("a");
    }
    ~TokenSignLogTest() override { certificate->Release(); }

    IKeyCertificate* certificateOf(const std::string& id) {
        IKeyContainer* container = nullptr;
        IKeyCertificate* found = nullptr;
        const Text name(id);
        EXPECT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
        EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&found)));
        container->Release();
        return found;
    }

    Lines sign() {
        return told([&] { token->SignData(nullptr, Bytes("data"), certificate, &result); });
    }
    Lines verify(IKeyCertificate* by) {
        return told([&] { token->VerifyData(Bytes("data"), by, nullptr, Bytes("sign")); });
    }
    Lines publicKeyOf(IKeyCertificate* by) {
        return told([&] { token->GetPubKeyData(by, &result); });
    }

    static Lines signing(const Lines& rest) {
        return broken("SignData",
                      Lines{"[SignData] KeyObject_pkcs11::SignData.................."} + rest);
    }

    CK_OBJECT_HANDLE privateKey;
    CK_OBJECT_HANDLE publicKey;
    IKeyCertificate* certificate;
};

TEST_F(TokenSignLogTest, ASignatureTellsItsKey) {
    logIn();
    EXPECT_EQ(signing(whole("GetPubPriKeyHandle") + Lines{"[SignData] End"}), sign());
    VariantClear(&result);
}

TEST_F(TokenSignLogTest, ARefusedSignatureTellsWhy) {
    EXPECT_EQ(signing({"[SignData] Error: m_bLogin is FALSE "}), sign());
    logIn();
    EXPECT_EQ(signing({"[SignData] Error: parameter error "}),
              told([&] { token->SignData(nullptr, result, certificate, &result); }));
    EXPECT_EQ(signing({"[SignData] Error: GetCertID fail"}),
              told([&] { token->SignData(nullptr, Bytes("data"), nullptr, &result); }));
    module->fail("C_SignInit", 1, CKR_OBJECT_HANDLE_INVALID);
    EXPECT_EQ(signing(whole("GetPubPriKeyHandle") + Lines{"[SignData] Error: SignInit Fail"}),
              sign());
    module->fail("C_Sign", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(signing(whole("GetPubPriKeyHandle") + Lines{"[SignData] Error: Sign Fail"}), sign());
    module->removeObject(privateKey);
    EXPECT_EQ(
        signing(whole("GetPubPriKeyHandle") + Lines{"[SignData] Error: GetPubPriKeyHandle fail"}),
        sign());
}

TEST_F(TokenSignLogTest, AnArrayThatCannotBeReadIsARefusedSignature) {
    logIn();
    const Bytes locked("data");
    const VARIANT& data = locked;
    data.parray->cLocks = 0xFFFF;
    EXPECT_EQ(signing(whole("GetPubPriKeyHandle") + Lines{"[SignData] Error: Sign Fail"}),
              told([&] { token->SignData(nullptr, data, certificate, &result); }));
    data.parray->cLocks = 0;
    // A whole line: what follows begins with its own time.
    EXPECT_EQ(signing(whole("GetPubPriKeyHandle") + Lines{"[SignData] End"}), sign());
    VariantClear(&result);
}

TEST_F(TokenSignLogTest, AVerificationTellsItsKeyAndEndsWhateverItsResult) {
    logIn();
    EXPECT_EQ(whole("VerifyData", whole("GetPubPriKeyHandle")), verify(certificate));
    module->fail("C_VerifyInit", 1, CKR_OBJECT_HANDLE_INVALID);
    EXPECT_EQ(whole("VerifyData", whole("GetPubPriKeyHandle")), verify(certificate));
    module->removeObject(publicKey);
    EXPECT_EQ(whole("VerifyData", whole("GetPubPriKeyHandle")), verify(certificate));
}

TEST_F(TokenSignLogTest, ARefusedVerificationTellsWhy) {
    EXPECT_EQ(broken("VerifyData",
                     {"[VerifyData] Error: KeyObject_pkcs11::VerifyData m_bLogin is false"}),
              verify(certificate));
    logIn();
    EXPECT_EQ(broken("VerifyData", {"[VerifyData] Error: Get cert id fail"}), verify(nullptr));
    EXPECT_EQ(broken("VerifyData",
                     {"[VerifyData] Error: KeyObject_pkcs11::VerifyData ... parament error"}),
              told([&] { token->VerifyData(result, certificate, nullptr, Bytes("sign")); }));
}

TEST_F(TokenSignLogTest, APublicKeyTellsEachStep) {
    IKeyCertificate* nameless = certificateOf("");
    EXPECT_EQ(whole("GetPubKeyData", {"[GetPubKeyData] C_GetAttributeValue 1 success"}),
              publicKeyOf(nameless));
    VariantClear(&result);
    nameless->Release();
}

TEST_F(TokenSignLogTest, APublicKeyThatIsNotFoundTellsWhy) {
    const std::string none = "[GetPubKeyData] Error: pbtPubKeyData == NULL";
    EXPECT_EQ(broken("GetPubKeyData", {"[GetPubKeyData] C_GetAttributeValue 1 success",
                                       "[GetPubKeyData] Error: ulRetCount != 1", none}),
              publicKeyOf(certificate));
    module->fail("C_FindObjects", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(broken("GetPubKeyData", {"[GetPubKeyData] Error: C_FindObjects fail", none}),
              publicKeyOf(certificate));
    module->fail("C_GetAttributeValue", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(broken("GetPubKeyData",
                     {"[GetPubKeyData] Error: C_GetAttributeValue fail 1 ckrv=[0x32]", none}),
              publicKeyOf(certificate));
    module->fail("C_GetAttributeValue", 2, CKR_DEVICE_REMOVED);
    EXPECT_EQ(broken("GetPubKeyData", {"[GetPubKeyData] C_GetAttributeValue 1 success",
                                       "[GetPubKeyData] Error: C_GetAttributeValue fail 2", none}),
              publicKeyOf(certificate));
}

TEST_F(TokenSignLogTest, ARefusedReadingOfAPublicKeyTellsWhy) {
    EXPECT_EQ(
        broken("GetPubKeyData", {"[GetPubKeyData] Error: pKeyCert == NULL || pvarResult == NULL"}),
        publicKeyOf(nullptr));
}

}  // namespace
}  // namespace zr::test
