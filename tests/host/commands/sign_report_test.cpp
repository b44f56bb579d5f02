// sign with the library and beside it: reports, sequences of calls, and what fails where.
#include "host/token/cryptoki_session.h"
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

using Deeds = std::vector<std::string>;
using Words = std::vector<std::string>;

constexpr CK_MECHANISM_TYPE kRsa = 0x1;
constexpr CK_MECHANISM_TYPE kRsaPss = 0xD;
constexpr CK_MECHANISM_TYPE kSha256Rsa = 0x40;
constexpr CK_MECHANISM_TYPE kSha256RsaPss = 0x43;
constexpr CK_MECHANISM_TYPE kEcdsa = 0x1041;
constexpr CK_MECHANISM_TYPE kEcdsaSha256 = 0x1044;
constexpr CK_KEY_TYPE kEc = 3;
constexpr CK_ATTRIBUTE_TYPE kAlwaysAuthenticate = 0x202;

/// "abc" hashed with SHA-256, behind the DigestInfo of PKCS #1.
const std::string kDigestInfo(
    "\x30\x31\x30\x0d\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x01\x05\x00\x04\x20"
    "\xba\x78\x16\xbf\x8f\x01\xcf\xea\x41\x41\x40\xde\x5d\xae\x22\x23"
    "\xb0\x03\x61\xa3\x96\x17\x7a\x9c\xb4\x10\xff\x61\xf2\x00\x15\xad",
    19 + 32);

class SignReportTest : public CertificateCommandTest {
protected:
    SignReportTest() { setSignature(sample(kRsaSha1)); }

    static Words sign(const Words& more = {}) {
        Words words = withPin({"sign", "-i", "data.bin"});
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    /// Expects a signature; compared in hex, which no stream of text changes.
    static void expectSignature(Words words, const std::string& signature) {
        words.insert(words.end(), {"--format", "hex"});
        expectOutput(words, host::toHex(signature) + "\n");
    }
    static std::string asked(const std::string& cause) {
        return "sign with the key of \"one\": " + cause;
    }
    void useP256() {
        addCertificate("one", kP256Certificate, kEc);
        setMechanisms({kEcdsa});
        setSignature(host::ecdsaFromDer(sample(kP256Sha256), 32).value());
    }
};

TEST_F(SignReportTest, SignatureIsWrittenInEachFormat) {
    addCertificate("one", kRsaCertificate);
    const std::string base64 = host::toBase64(sample(kRsaSha1));
    expectSignature(sign(), sample(kRsaSha1));
    expectOutput(sign({"--output", "raw.sig"}), "");
    EXPECT_EQ(sample(kRsaSha1), readFile("raw.sig"));
    expectOutput(sign({"--format", "base64"}), base64 + "\n");
    expectJson(sign(), "sign",
               R"("signature":")" + base64 + R"(","algorithm":"SHA1WithRSA","name":"one")");
}

TEST_F(SignReportTest, LibrarySignsWithoutAnAlgorithmAndWithItsOwn) {
    addCertificate("one", kRsaCertificate);
    for (const Words& more : {Words{}, {"--algorithm", "rsa-sha1"}}) {
        expectSignature(sign(more), sample(kRsaSha1));
        EXPECT_EQ((Deeds{"C_Login(1, 1, 1234)", "C_SignInit(1, 6/0, 1)", "C_Sign(1, [abc], 1024)"}),
                  takeDeeds());
    }
}

TEST_F(SignReportTest, CertificatesAreWalkedOnceAndOneIsRead) {
    addCertificate("one", kRsaCertificate);
    const CK_OBJECT_HANDLE key = privateKey;
    const CK_OBJECT_HANDLE first = module.addCertificate("two", sample(kRsaCertificate));
    const CK_OBJECT_HANDLE last = module.addCertificate("three", sample(kRsaCertificate));
    for (const char* choice : {"one", "id:6f6e65", "index:0"}) {
        module.takeCalls();
        expectSignature(sign({"--cert", choice}), sample(kRsaSha1));
        Deeds looks;
        for (const std::string& call : module.takeCalls()) {
            if (call.starts_with("C_FindObjectsInit") || call.starts_with("C_GetAttributeValue")) {
                looks.push_back(call);
            }
        }
        const auto look = [](int session, CK_OBJECT_HANDLE object, const char* attributes) {
            return "C_GetAttributeValue(" + std::to_string(session) + ", " +
                   std::to_string(object) + ", {" + attributes + "})";
        };
        EXPECT_EQ(
            (Deeds{"C_FindObjectsInit(2, {0x0=1 0x1=1})", look(2, first - 1, "0x80[] 0x102[]"),
                   look(2, first, "0x80[] 0x102[]"), look(2, last, "0x80[] 0x102[]"),
                   look(2, first - 1, "0x3 0x11"), look(2, first - 1, "0x3 0x11[815]"),
                   // What the library does with a certificate: it finds the key.
                   "C_FindObjectsInit(1, {0x0=3 0x1=1 0x100=0})", look(1, key, "0x0 0x102"),
                   look(1, key, "0x0=0 0x102[]")}),
            looks);
    }
}

TEST_F(SignReportTest, NameThatIsNotUtf8IsSignedWithByTheLibrary) {
    addCertificate("one", kP256Certificate, kEc);
    addCertificate("\xFF", kRsaCertificate);
    const CK_OBJECT_HANDLE key = privateKey;
    expectSignature(sign({"--cert", "id:ff"}), sample(kRsaSha1));
    EXPECT_EQ("C_SignInit(1, 6/0, " + std::to_string(key) + ")", takeDeeds().at(1));
}

TEST_F(SignReportTest, EmptyIdAndLongIdAreSignedWith) {
    addCertificate("", kRsaCertificate);
    expectSignature(sign(), sample(kRsaSha1));
    EXPECT_EQ("C_SignInit(1, 6/0, 1)", takeDeeds().at(1));
    const std::string longId(host::kShortValue + 1, 'x');
    addCertificate(longId, kRsaCertificate);
    expectSignature(sign({"--cert", longId}), sample(kRsaSha1));
    // The library does not find so long a name.
    EXPECT_EQ("C_SignInit(2, 6/0, " + std::to_string(privateKey) + ")", takeDeeds().at(1));
}

TEST_F(SignReportTest, CertificateBehindOneWithoutAnIdIsNotSignedWith) {
    addCertificate("one", kRsaCertificate);
    const CK_OBJECT_HANDLE without = module->addObject();
    for (const CK_ATTRIBUTE_TYPE type : {CKA_CLASS, CKA_TOKEN, CKA_CERTIFICATE_TYPE}) {
        const CK_ULONG number = type == CKA_CERTIFICATE_TYPE ? CKC_X_509 : 1;
        module->setAttribute(without, type, &number, type == CKA_TOKEN ? 1 : sizeof number);
    }
    addCertificate("three", kRsaCertificate);
    expectFailure(sign({"--cert", "id:7468726565"}), 4,
                  "find the certificate with the ID 7468726565: the certificates are: 0 \"one\" "
                  "id:6f6e65 (C=DE, O=Example Ltd, CN=Erika Mustermann); choose one with --cert "
                  "NAME, --cert id:HEX or --cert "
                  "index:N");
    EXPECT_EQ(Deeds{"C_Login(1, 1, 1234)"}, takeDeeds());
}

TEST_F(SignReportTest, TokenHashesWhereItCan) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaSha256));
    setMechanisms({kRsa, kSha256Rsa});
    expectSignature(sign({"--algorithm", "rsa-sha256"}), sample(kRsaSha256));
    EXPECT_EQ((Deeds{"C_Login(1, 1, 1234)", "C_SignInit(2, 64/0, 1)", "C_SignUpdate(2, [abc])",
                     "C_SignFinal(2, 4096)"}),
              takeDeeds());
}

TEST_F(SignReportTest, CommandHashesWhereTheTokenCannot) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaSha256));
    setMechanisms({kRsa});
    expectSignature(sign({"--algorithm", "rsa-sha256"}), sample(kRsaSha256));
    EXPECT_EQ((Deeds{"C_Login(1, 1, 1234)", "C_SignInit(2, 1/0, 1)",
                     "C_Sign(2, [" + kDigestInfo + "], 4096)"}),
              takeDeeds());
}

TEST_F(SignReportTest, BareMechanismTakesTheHashOfEachAlgorithm) {
    addCertificate("one", kRsaCertificate);
    setMechanisms({kRsa, kRsaPss});
    const std::pair<const char*, const char*> algorithms[] = {
        {"rsa-sha384", kRsaSha384}, {"rsa-sha512", kRsaSha512}, {"rsa-pss-sha256", kRsaPssSha256}};
    const std::string lengths[] = {"67", "83", "32"};
    for (std::size_t i = 0; i < 3; ++i) {
        setSignature(sample(algorithms[i].second));
        expectSignature(sign({"--algorithm", algorithms[i].first}), sample(algorithms[i].second));
        const Deeds deeds = takeDeeds();
        ASSERT_EQ(3u, deeds.size());
        // "C_Sign(2, [" before the bytes, "], 4096)" behind them.
        EXPECT_EQ(lengths[i], std::to_string(deeds[2].size() - 11 - 8));
    }
}

TEST_F(SignReportTest, PssHasItsParameters) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaPssSha256));
    setMechanisms({kSha256RsaPss});
    expectSignature(sign({"--algorithm", "rsa-pss-sha256"}), sample(kRsaPssSha256));
    EXPECT_EQ("C_SignInit(2, 67/" + std::to_string(3 * sizeof(CK_ULONG)) + " set, 1)",
              takeDeeds().at(1));
}

TEST_F(SignReportTest, EcdsaSignatureIsDerOrRaw) {
    useP256();
    expectSignature(sign({"--algorithm", "ecdsa-sha256"}), sample(kP256Sha256));
    expectSignature(sign({"--algorithm", "ecdsa-sha256", "--raw"}),
                    host::ecdsaFromDer(sample(kP256Sha256), 32).value());
    setMechanisms({kEcdsa, kEcdsaSha256});
    takeDeeds();
    expectSignature(sign({"--algorithm", "ecdsa-sha256"}), sample(kP256Sha256));
    EXPECT_EQ("C_SignInit(2, 4164/0, 1)", takeDeeds().at(1));
}

TEST_F(SignReportTest, HashLongerThanTheCurveIsCut) {
    useP256();
    setSignature(host::ecdsaFromDer(sample(kP256Sha384), 32).value());
    expectSignature(sign({"--algorithm", "ecdsa-sha384"}), sample(kP256Sha384));
    EXPECT_EQ(11u + 32 + 8, takeDeeds().at(2).size());
}

TEST_F(SignReportTest, MechanismThatDoesNotSignIsNotUsed) {
    addCertificate("one", kRsaCertificate);
    setMechanisms({kSha256Rsa});
    module->settings().mechanismFlags = 0x2000;
    expectFailure(sign({"--algorithm", "rsa-sha256"}), 1,
                  asked("the token signs neither with CKM_SHA256_RSA_PKCS nor with CKM_RSA_PKCS; "
                        "choose another --algorithm"));
}

TEST_F(SignReportTest, KeyThatAsksAlwaysGetsThePinAgain) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaSha256));
    setMechanisms({kSha256Rsa});
    module->setAttribute(privateKey, kAlwaysAuthenticate, "\1", 1);
    expectSignature(sign({"--algorithm", "rsa-sha256"}), sample(kRsaSha256));
    EXPECT_EQ((Deeds{"C_Login(1, 1, 1234)", "C_SignInit(2, 64/0, 1)", "C_Login(2, 2, 1234)",
                     "C_SignUpdate(2, [abc])", "C_SignFinal(2, 4096)"}),
              takeDeeds());
    module->fail("C_Login", 2, CKR_PIN_INCORRECT);
    expectFailure(sign({"--algorithm", "rsa-sha256"}), 5,
                  asked("the key asks for a PIN at each use, and the token refused this one: "
                        "CKR_PIN_INCORRECT (0x000000A0); the key may have a PIN of its own, which "
                        "this command cannot give"));
}

TEST_F(SignReportTest, KeyThatAsksAlwaysIsNotForTheLibrary) {
    addCertificate("one", kRsaCertificate);
    module->setAttribute(privateKey, kAlwaysAuthenticate, "\1", 1);
    module->fail("C_Sign", 0, CKR_USER_NOT_LOGGED_IN);
    expectFailure(sign(), 1,
                  asked("the key asks for the PIN at each use, which the object model does not do; "
                        "choose another --algorithm: rsa-sha256"));
}

TEST_F(SignReportTest, SignatureByAnotherKeyIsNotWritten) {
    addCertificate("one", kRsaCertificate);
    writeFile("kept.sig", "kept");
    const std::string cause = asked(
        "the signature is not by the key in the certificate: the token used another key; nothing "
        "was written; give each certificate and its keys an ID of their own");
    std::string wrong = sample(kRsaSha1);
    wrong[100] = static_cast<char>(wrong[100] ^ 1);
    setSignature(wrong);
    setMechanisms({kSha256Rsa});
    for (const char* algorithm : {"rsa-sha1", "rsa-sha256"}) {
        expectFailure(sign({"--algorithm", algorithm}), 1, cause);
        expectFailure(sign({"--algorithm", algorithm, "-o", "kept.sig"}), 1, cause);
    }
    EXPECT_EQ("kept", readFile("kept.sig"));
}

TEST_F(SignReportTest, SignatureThatCannotBeCheckedIsNotWritten) {
    module.addCertificate("one", "no certificate");
    module.addKey(CKO_PRIVATE_KEY, "one");
    expectFailure(sign(), 1,
                  asked("the signature cannot be checked: the certificate has no key that can be "
                        "read; nothing was written; choose another certificate"));
}

TEST_F(SignReportTest, CertificatesWithOneNameAreToldApartByTheirIds) {
    // The library would use the first key with the empty name.
    addCertificate(std::string("\0\1", 2), kP256Certificate, kEc);
    addCertificate(std::string("\0\2", 2), kRsaCertificate);
    const CK_OBJECT_HANDLE key = privateKey;
    for (const char* choice : {"id:0002", "index:1"}) {
        expectSignature(sign({"--cert", choice}), sample(kRsaSha1));
        EXPECT_EQ("C_SignInit(2, 6/0, " + std::to_string(key) + ")", takeDeeds().at(1));
    }
}

TEST_F(SignReportTest, CertificateWithoutAKeySaysSo) {
    module.addCertificate("one", sample(kRsaCertificate));
    setMechanisms({kSha256Rsa});
    expectFailure(sign({"--algorithm", "rsa-sha256"}), 1,
                  asked("the token has no private key with the ID of the certificate; choose "
                        "another certificate with --cert"));
    expectFailure({"sign", "-i", "data.bin", "--algorithm", "rsa-sha256"}, 7,
                  asked("the token shows no private key with the ID of the certificate; log in "
                        "first: give --pin"));
}

TEST_F(SignReportTest, AlgorithmForAnotherKindOfKeyIsRefused) {
    useP256();
    expectFailure(sign(), 1,
                  asked("the certificate has a key of the type EC, and rsa-sha1 needs RSA; "
                        "choose --algorithm ecdsa-sha256 or ecdsa-sha384"));
    EXPECT_EQ(Deeds{"C_Login(1, 1, 1234)"}, takeDeeds());
}

TEST_F(SignReportTest, RawIsForEcdsaAlone) {
    expectFailure(sign({"--raw"}), 2,
                  "use --raw: it is for the algorithms ecdsa-... alone; give --algorithm "
                  "ecdsa-sha256, or leave --raw out");
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(SignReportTest, MissingInputFailsBeforeTheTokenWorks) {
    for (const char* algorithm : {"rsa-sha1", "rsa-sha256"}) {
        expectFailure(withPin({"sign", "-i", "missing.bin", "--algorithm", algorithm}), 1,
                      "read \"missing.bin\": No such file or directory; check the path and its "
                      "permissions");
    }
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(SignReportTest, LargeDataIsSignedInPieces) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaSha256));
    setMechanisms({kSha256Rsa});
    writeFile("data.bin", std::string(200000, 'x'));
    // The signature is of other data, so it is not written.
    EXPECT_EQ(1, zrkey(sign({"--algorithm", "rsa-sha256"})).exitCode);
    EXPECT_EQ(4u, module.count("C_SignUpdate"));
}

TEST_F(SignReportTest, UnknownAlgorithmIsWrongUsage) {
    expectUsageError({"sign", "--algorithm", "md5"},
                     "--algorithm: the algorithm must be one of rsa-sha1, rsa-sha256, rsa-sha384, "
                     "rsa-sha512, rsa-pss-sha256, ecdsa-sha256, ecdsa-sha384",
                     "sign [OPTIONS]");
}

TEST_F(SignReportTest, RefusedSignatureSaysWhatIsMissing) {
    addCertificate("one", kRsaCertificate);
    expectFailure({"sign", "-i", "data.bin"}, 7,
                  asked("the library returned RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005); log "
                        "in first: give --pin"));
    module->fail("C_Sign", 0, CKR_GENERAL_ERROR);
    expectFailure(sign(), 1,
                  asked("the library returned E_FAIL (0x80004005); check that the token has its "
                        "private RSA key"));
}

TEST_F(SignReportTest, FailedCallIsNamedAndNothingIsWritten) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaSha256));
    setMechanisms({kRsa, kSha256Rsa});
    writeFile("kept.sig", "kept");
    const Words streaming = sign({"--algorithm", "rsa-sha256", "-o", "kept.sig"});
    for (const auto& [function, nth] :
         {std::pair{"C_GetMechanismList", 1u}, std::pair{"C_FindObjectsInit", 2u},
          std::pair{"C_SignInit", 1u}, std::pair{"C_SignUpdate", 1u},
          std::pair{"C_SignFinal", 1u}}) {
        module->fail(function, nth, CKR_DEVICE_REMOVED);
        expectFailure(streaming, 1,
                      asked(std::string("the module's ") + function +
                            " returned CKR_DEVICE_REMOVED (0x00000032); the token was removed; "
                            "connect it and try again"));
    }
    setMechanisms({kRsa});
    module->fail("C_Sign", 1, 0x21);  // CKR_DATA_LEN_RANGE
    const CommandResult result = zrkey(streaming);
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(std::string::npos, result.errors.find("C_Sign returned CKR_DATA_LEN_RANGE"));
    EXPECT_EQ("kept", readFile("kept.sig"));
    EXPECT_EQ(0u, module->openSessions());
}

TEST_F(SignReportTest, EveryCallThatFailsLeavesNoOutput) {
    addCertificate("one", kRsaCertificate);
    setSignature(sample(kRsaSha256));
    setMechanisms({kSha256Rsa});
    int succeeded = 0;
    for (unsigned int nth = 1; nth < 100; ++nth) {
        module->fail(nullptr, nth, CKR_DEVICE_REMOVED);
        const CommandResult result = zrkey(sign({"--algorithm", "rsa-sha256", "--format", "hex"}));
        // Only calls at the end, and some of information, may fail without harm.
        EXPECT_EQ(result.exitCode == 0 ? host::toHex(sample(kRsaSha256)) + "\n" : "", result.output)
            << nth;
        EXPECT_EQ(result.exitCode == 0, result.errors.empty()) << nth << result.errors;
        succeeded += result.exitCode == 0 ? 1 : 0;
    }
    EXPECT_GT(succeeded, 30);
    EXPECT_LT(succeeded, 80);
}

TEST_F(SignReportTest, HostileSignatureIsNotWritten) {
    addCertificate("one", kRsaCertificate);
    setMechanisms({kSha256Rsa});
    setSignature(std::string(4097, 'x'));
    EXPECT_EQ("", zrkey(sign({"--algorithm", "rsa-sha256"})).output);
    useP256();
    setSignature("odd");
    expectFailure(sign({"--algorithm", "ecdsa-sha256", "--cert", "index:1"}), 1,
                  asked("the token returned 3 bytes, which are not r and s; the module is faulty; "
                        "look for a newer one"));
}

}  // namespace
}  // namespace zr::test
