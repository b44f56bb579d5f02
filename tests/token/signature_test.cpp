// Signatures by the key of a real token, checked against openssl in both directions.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class SignatureTest : public LoggedInSoftTokenTest {
protected:
    std::string sign(const std::string& data, const Text& algorithm) const {
        ByteArray signature;
        EXPECT_HR(S_OK, token->SignData(algorithm, ByteArray(data), certificate.get(),
                                        signature.receive()));
        return signature.bytes().value_or("(none)");
    }

    ComRef<IKeyCertificate> certificate = openCertificate();
};

TEST_F(SignatureTest, SignDataMakesASignatureForOpenssl) {
    const std::string signature = sign("signed by the token", Text("SHA1WithRSA"));
    EXPECT_EQ(256u, signature.size());
    std::ofstream(tokenFile("by-token.bin"), std::ios::binary) << signature;
}

TEST_F(SignatureTest, SignDataIgnoresTheAlgorithmName) {
    const std::string signature = sign("data", Text("SHA1WithRSA"));
    EXPECT_EQ(signature, sign("data", Text("SM3WithSM2")));
    EXPECT_EQ(signature, sign("data", Text("")));
}

TEST_F(SignatureTest, VerifyDataAcceptsASignatureOfOpenssl) {
    const ByteArray signature(readTokenFile("by-openssl.bin"));
    EXPECT_HR(S_OK, token->VerifyData(ByteArray("signed by openssl"), certificate.get(), nullptr,
                                      signature));
    EXPECT_HR(E_FAIL, token->VerifyData(ByteArray("signed by Openssl"), certificate.get(), nullptr,
                                        signature));
}

TEST_F(SignatureTest, VerifyDataOfAChangedOrShortenedSignatureFails) {
    std::string signature = readTokenFile("by-openssl.bin");
    const ByteArray data("signed by openssl");
    EXPECT_HR(E_FAIL, token->VerifyData(data, certificate.get(), nullptr,
                                        ByteArray(signature.substr(0, signature.size() - 1))));
    signature[100] = static_cast<char>(signature[100] ^ 1);
    EXPECT_HR(E_FAIL, token->VerifyData(data, certificate.get(), nullptr, ByteArray(signature)));
    EXPECT_HR(E_FAIL, token->VerifyData(ByteArray(signature), certificate.get(), nullptr, data));
}

TEST_F(SoftTokenTest, SignDataAndVerifyDataWithoutALoginReturnCantCallOut) {
    ComRef<IKeyCertificate> certificate = openCertificate();
    const ByteArray data("signed by openssl");
    VARIANT signature = poisoned();
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              token->SignData(nullptr, data, certificate.get(), &signature));
    EXPECT_EQ(VT_UI1, signature.vt);
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              token->VerifyData(data, certificate.get(), nullptr,
                                ByteArray(readTokenFile("by-openssl.bin"))));
    EXPECT_EQ(0u, certificate.release()->Release());
}

}  // namespace
}  // namespace zr::test
