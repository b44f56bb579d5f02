// Signatures by the key of a real token, checked against openssl in both directions.
#include "tests/token/soft_token.h"

namespace zr::test {
namespace {

class SignatureTest : public LoggedInSoftTokenTest {
protected:
    ~SignatureTest() override {
        if (certificate) {
            certificate->Release();
        }
    }

    std::string sign(const std::string& data, const Text& algorithm) const {
        VARIANT signature;
        VariantInit(&signature);
        EXPECT_HR(S_OK, token->SignData(algorithm, Bytes(data), certificate, &signature));
        return takeBytes(&signature);
    }

    IKeyCertificate* certificate = openCertificate();
};

TEST_F(SignatureTest, ItIsLeftForOpensslToVerify) {
    const std::string signature = sign("signed by the token", Text("SHA1WithRSA"));
    EXPECT_EQ(256u, signature.size());
    std::ofstream(tokenFile("by-token.bin"), std::ios::binary) << signature;
}

TEST_F(SignatureTest, TheAlgorithmsNameMakesNoDifference) {
    const std::string signature = sign("data", Text("SHA1WithRSA"));
    EXPECT_EQ(signature, sign("data", Text("SM3WithSM2")));
    EXPECT_EQ(signature, sign("data", Text("")));
}

TEST_F(SignatureTest, ThatOfOpensslVerifies) {
    const Bytes signature(readTokenFile("by-openssl.bin"));
    EXPECT_HR(S_OK, token->VerifyData(Bytes("signed by openssl"), certificate, nullptr, signature));
    EXPECT_HR(E_FAIL,
              token->VerifyData(Bytes("signed by Openssl"), certificate, nullptr, signature));
}

TEST_F(SignatureTest, AChangedOrCutOneDoesNotVerify) {
    std::string signature = readTokenFile("by-openssl.bin");
    const Bytes data("signed by openssl");
    EXPECT_HR(E_FAIL, token->VerifyData(data, certificate, nullptr,
                                        Bytes(signature.substr(0, signature.size() - 1))));
    signature[100] = static_cast<char>(signature[100] ^ 1);
    EXPECT_HR(E_FAIL, token->VerifyData(data, certificate, nullptr, Bytes(signature)));
    EXPECT_HR(E_FAIL, token->VerifyData(Bytes(signature), certificate, nullptr, data));
}

TEST_F(SoftTokenTest, WithoutALoginNothingIsSignedOrVerified) {
    IKeyCertificate* certificate = openCertificate();
    const Bytes data("signed by openssl");
    VARIANT signature = poisoned();
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              token->SignData(nullptr, data, certificate, &signature));
    EXPECT_EQ(VT_UI1, signature.vt);
    EXPECT_HR(
        RPC_E_CANTCALLOUT_INEXTERNALCALL,
        token->VerifyData(data, certificate, nullptr, Bytes(readTokenFile("by-openssl.bin"))));
    EXPECT_EQ(0u, certificate->Release());
}

}  // namespace
}  // namespace zr::test
