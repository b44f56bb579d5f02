// What SignData, VerifyData and GetPubKeyData write to the log.
#include "tests/support/fixtures/token_log.h"

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

    ComRef<IKeyCertificate> certificateOf(const std::string& id) {
        return openCertificate(token.get(), Variant::fromText(Text(id)));
    }

    Lines sign() {
        return logged([&] {
            token->SignData(nullptr, ByteArray("data"), certificate.get(), result.receive());
        });
    }
    Lines verify(IKeyCertificate* by) {
        return logged(
            [&] { token->VerifyData(ByteArray("data"), by, nullptr, ByteArray("sign")); });
    }
    Lines publicKeyOf(IKeyCertificate* by) {
        return logged([&] { token->GetPubKeyData(by, result.receive()); });
    }

    static Lines signing(const Lines& rest) {
        return begunOnly("SignData",
                         Lines{"[SignData] KeyObject_pkcs11::SignData.................."} + rest);
    }

    CK_OBJECT_HANDLE privateKey;
    CK_OBJECT_HANDLE publicKey;
    ComRef<IKeyCertificate> certificate;
};

TEST_F(TokenSignLogTest, SignDataLogsItsKeyLookUp) {
    logIn();
    EXPECT_EQ(signing(begunAndEnded("GetPubPriKeyHandle") + Lines{"[SignData] End"}), sign());
}

TEST_F(TokenSignLogTest, FailedSignDataLogsTheReason) {
    EXPECT_EQ(signing({"[SignData] Error: m_bLogin is FALSE "}), sign());
    logIn();
    EXPECT_EQ(signing({"[SignData] Error: parameter error "}), logged([&] {
                  token->SignData(nullptr, result, certificate.get(), result.receive());
              }));
    EXPECT_EQ(signing({"[SignData] Error: GetCertID fail"}), logged([&] {
                  token->SignData(nullptr, ByteArray("data"), nullptr, result.receive());
              }));
    module->fail("C_SignInit", 1, CKR_OBJECT_HANDLE_INVALID);
    EXPECT_EQ(
        signing(begunAndEnded("GetPubPriKeyHandle") + Lines{"[SignData] Error: SignInit Fail"}),
        sign());
    module->fail("C_Sign", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(signing(begunAndEnded("GetPubPriKeyHandle") + Lines{"[SignData] Error: Sign Fail"}),
              sign());
    module->removeObject(privateKey);
    EXPECT_EQ(signing(begunAndEnded("GetPubPriKeyHandle") +
                      Lines{"[SignData] Error: GetPubPriKeyHandle fail"}),
              sign());
}

TEST_F(TokenSignLogTest, SignDataWithoutAResultLogsAParameterError) {
    logIn();
    EXPECT_EQ(signing({"[SignData] Error: parameter error "}), logged([&] {
                  token->SignData(nullptr, ByteArray("data"), certificate.get(), nullptr);
              }));
}

TEST_F(TokenSignLogTest, GetPubKeyDataWithoutAResultLogsANullPointer) {
    EXPECT_EQ(begunOnly("GetPubKeyData",
                        {"[GetPubKeyData] Error: pKeyCert == NULL || pvarResult == NULL"}),
              logged([&] { token->GetPubKeyData(certificate.get(), nullptr); }));
}

TEST_F(TokenSignLogTest, SignDataOfAnUnreadableArrayLogsAFailedSignature) {
    logIn();
    const ByteArray locked("data");
    const VARIANT& data = locked;
    data.parray->cLocks = 0xFFFF;
    EXPECT_EQ(signing(begunAndEnded("GetPubPriKeyHandle") + Lines{"[SignData] Error: Sign Fail"}),
              logged([&] { token->SignData(nullptr, data, certificate.get(), result.receive()); }));
    data.parray->cLocks = 0;
    // The line above is complete: the next one begins with its own time.
    EXPECT_EQ(signing(begunAndEnded("GetPubPriKeyHandle") + Lines{"[SignData] End"}), sign());
}

TEST_F(TokenSignLogTest, VerifyDataLogsItsKeyLookUpAndItsEndForAnyResult) {
    logIn();
    EXPECT_EQ(begunAndEnded("VerifyData", begunAndEnded("GetPubPriKeyHandle")),
              verify(certificate.get()));
    module->fail("C_VerifyInit", 1, CKR_OBJECT_HANDLE_INVALID);
    EXPECT_EQ(begunAndEnded("VerifyData", begunAndEnded("GetPubPriKeyHandle")),
              verify(certificate.get()));
    module->removeObject(publicKey);
    EXPECT_EQ(begunAndEnded("VerifyData", begunAndEnded("GetPubPriKeyHandle")),
              verify(certificate.get()));
}

TEST_F(TokenSignLogTest, RefusedVerifyDataLogsTheReason) {
    EXPECT_EQ(begunOnly("VerifyData",
                        {"[VerifyData] Error: KeyObject_pkcs11::VerifyData m_bLogin is false"}),
              verify(certificate.get()));
    logIn();
    EXPECT_EQ(begunOnly("VerifyData", {"[VerifyData] Error: Get cert id fail"}), verify(nullptr));
    EXPECT_EQ(
        begunOnly("VerifyData",
                  {"[VerifyData] Error: KeyObject_pkcs11::VerifyData ... parament error"}),
        logged([&] { token->VerifyData(result, certificate.get(), nullptr, ByteArray("sign")); }));
}

TEST_F(TokenSignLogTest, GetPubKeyDataLogsItsSteps) {
    ComRef<IKeyCertificate> nameless = certificateOf("");
    EXPECT_EQ(begunAndEnded("GetPubKeyData", {"[GetPubKeyData] C_GetAttributeValue 1 success"}),
              publicKeyOf(nameless.get()));
}

TEST_F(TokenSignLogTest, FailedGetPubKeyDataLogsTheReason) {
    const std::string none = "[GetPubKeyData] Error: pbtPubKeyData == NULL";
    EXPECT_EQ(begunOnly("GetPubKeyData", {"[GetPubKeyData] C_GetAttributeValue 1 success",
                                          "[GetPubKeyData] Error: ulRetCount != 1", none}),
              publicKeyOf(certificate.get()));
    module->fail("C_FindObjects", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(begunOnly("GetPubKeyData", {"[GetPubKeyData] Error: C_FindObjects fail", none}),
              publicKeyOf(certificate.get()));
    module->fail("C_GetAttributeValue", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(begunOnly("GetPubKeyData",
                        {"[GetPubKeyData] Error: C_GetAttributeValue fail 1 ckrv=[0x32]", none}),
              publicKeyOf(certificate.get()));
    module->fail("C_GetAttributeValue", 2, CKR_DEVICE_REMOVED);
    EXPECT_EQ(
        begunOnly("GetPubKeyData", {"[GetPubKeyData] C_GetAttributeValue 1 success",
                                    "[GetPubKeyData] Error: C_GetAttributeValue fail 2", none}),
        publicKeyOf(certificate.get()));
}

TEST_F(TokenSignLogTest, GetPubKeyDataWithoutACertificateLogsANullPointer) {
    EXPECT_EQ(begunOnly("GetPubKeyData",
                        {"[GetPubKeyData] Error: pKeyCert == NULL || pvarResult == NULL"}),
              publicKeyOf(nullptr));
}

}  // namespace
}  // namespace zr::test
