// verify by the key on the token, and by the key in the certificate.
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

using Words = std::vector<std::string>;

constexpr CK_KEY_TYPE kEc = 3;
constexpr const char* kFailed = "the library returned E_FAIL (0x80004005); ";

class VerifyReportTest : public CertificateCommandTest {
protected:
    VerifyReportTest() {
        setSignature(sample(kRsaSha1));
        writeFile("sha1.sig", sample(kRsaSha1));
        std::string wrong = sample(kRsaSha1);
        wrong[9] = static_cast<char>(wrong[9] ^ 1);
        writeFile("wrong.sig", wrong);
    }

    static Words verify(const std::string& signature, const Words& more = {}) {
        Words words = {"verify", "-i", "data.bin", "--signature", signature};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    static std::string asked(const std::string& cause) {
        return "verify the signature with the key of \"one\": " + cause;
    }
};

TEST_F(VerifyReportTest, SignatureVerifiesByTheKeyOnTheToken) {
    addCertificate("one", kRsaCertificate);
    expectOutput(withPin(verify("sha1.sig")), "verified by the key of \"one\"\n");
    EXPECT_EQ(1u, module.count("C_Verify"));
    expectJson(withPin(verify("sha1.sig")), "verify",
               R"("verified":true,"algorithm":"SHA1WithRSA","name":"one","key":"token")");
}

TEST_F(VerifyReportTest, RefusedVerificationSaysWhy) {
    addCertificate("one", kRsaCertificate);
    expectFailure(verify("sha1.sig"), 7,
                  asked("the library returned RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005); log "
                        "in first: give --pin"));
    expectFailure(withPin(verify("wrong.sig")), 6,
                  asked(std::string(kFailed) + "the data or the signature was changed, or the "
                                               "token lacks the public key"));
}

TEST_F(VerifyReportTest, KeysThatDisagreeAreNamed) {
    addCertificate("one", kRsaCertificate);
    module->removeObject(publicKey);
    expectFailure(withPin(verify("sha1.sig")), 6,
                  asked("the token does not accept the signature, but the key in the certificate "
                        "does; the token lacks the public key, or has that of another certificate "
                        "under this ID"));
    module.addKey(CKO_PUBLIC_KEY, "one");
    setSignature(readFile("wrong.sig"));
    expectFailure(withPin(verify("wrong.sig")), 6,
                  asked("the token accepts the signature, but the key in the certificate does not; "
                        "the token has the public key of another certificate under this ID"));
}

TEST_F(VerifyReportTest, CertificateThatCannotConfirmIsNoted) {
    module.addCertificate("one", "no certificate");
    module.addKey(CKO_PUBLIC_KEY, "one");
    const CommandResult result = zrkey(withPin(verify("sha1.sig")));
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("verified by the key of \"one\"\n", result.output);
    EXPECT_EQ("zrkey: the certificate has no key that can confirm it\n", result.errors);
    expectFailure(verify("sha1.sig", {"--algorithm", "rsa-sha256"}), 1,
                  asked("the certificate has no key that can be read; choose another certificate"));
}

TEST_F(VerifyReportTest, OtherAlgorithmsNeedNoLoginAndNoPublicKey) {
    module.addCertificate("one", sample(kRsaCertificate));
    const std::pair<const char*, const char*> algorithms[] = {{"rsa-sha256", kRsaSha256},
                                                              {"rsa-sha384", kRsaSha384},
                                                              {"rsa-sha512", kRsaSha512},
                                                              {"rsa-pss-sha256", kRsaPssSha256}};
    for (const auto& [name, signature] : algorithms) {
        writeFile("good.sig", sample(signature));
        expectOutput(verify("good.sig", {"--algorithm", name}),
                     "verified by the key in the certificate \"one\"\n");
        expectFailure(verify("sha1.sig", {"--algorithm", name}), 6,
                      asked("the signature is not by this key; the data or the signature was "
                            "changed, or another key or another --algorithm was used"));
    }
    expectJson(verify("good.sig", {"--algorithm", "rsa-pss-sha256"}), "verify",
               R"("verified":true,"algorithm":"rsa-pss-sha256","name":"one",)"
               R"("key":"certificate")");
    EXPECT_EQ(0u, module.count("C_Login") + module.count("C_Verify"));
}

TEST_F(VerifyReportTest, EcdsaSignatureIsDerOrRaw) {
    addCertificate("one", kP256Certificate, kEc);
    const std::string good = "verified by the key in the certificate \"one\"\n";
    writeFile("der.sig", sample(kP256Sha256));
    writeFile("raw.sig", host::ecdsaFromDer(sample(kP256Sha256), 32).value());
    writeFile("odd.sig", "odd");
    const Words der = {"--algorithm", "ecdsa-sha256"};
    const Words raw = {"--algorithm", "ecdsa-sha256", "--raw"};
    expectOutput(verify("der.sig", der), good);
    expectOutput(verify("raw.sig", raw), good);
    EXPECT_EQ(6, zrkey(verify("raw.sig", der)).exitCode);
    EXPECT_EQ(6, zrkey(verify("der.sig", raw)).exitCode);
    EXPECT_EQ(6, zrkey(verify("odd.sig", raw)).exitCode);
}

TEST_F(VerifyReportTest, CertificateWithASharedNameVerifiesByItsOwnKey) {
    addCertificate(std::string("\0\1", 2), kP256Certificate, kEc);
    addCertificate(std::string("\0\2", 2), kRsaCertificate);
    expectOutput(verify("sha1.sig", {"--cert", "id:0002"}),
                 "verified by the key in the certificate id:0002\n");
}

}  // namespace
}  // namespace zr::test
