// The reports of cert list and cert read, and the choice of a certificate, to the last character.
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

constexpr const char* kAdvice = "choose one with --cert NAME, --cert id:HEX or --cert index:N";
constexpr const char* kErika = "C=DE, O=Example Ltd, CN=Erika Mustermann";

class CertReportTest : public CertificateCommandTest {
protected:
    /// The certificate that a choice leads to; empty after a failure.
    static std::string read(const std::vector<std::string>& choice) {
        std::vector<std::string> words = {"cert", "read", "--format", "hex"};
        words.insert(words.end(), choice.begin(), choice.end());
        return host::decode(zrkey(words).output, host::ByteFormat::kHex).value_or("malformed");
    }
};

TEST_F(CertReportTest, CertificatesAreListedWithWhatTheySay) {
    addCertificate("one", kRsaCertificate);
    addCertificate("two", kExpiredCertificate);
    addCertificate(std::string("\0\x01\xab", 3), kP256Certificate);
    expectOutput({"cert", "list"},
                 std::string("0\tone\t") + kErika + "\t" + kErika +
                     "\tuntil 2099-12-31\t01ab\tRSA 2048\tid:6f6e65\n"
                     "1\ttwo\tCN=expired\tCN=expired\texpired 2021-01-01\t02\tRSA 1024\tid:74776f\n"
                     "2\t\tC=CH, O=Example, CN=p256\tC=CH, O=Example, CN=p256\tuntil 2099-12-31\t"
                     "e1f2a3b4c5d6e7f8091a2b3c4d5e6f70\tEC 256\tid:0001ab\n");
}

TEST_F(CertReportTest, ListInJsonHasTheSameAndMore) {
    const CK_OBJECT_HANDLE certificate = addCertificate("one", kExpiredCertificate);
    module->setAttribute(certificate, CKA_LABEL, "label", 5);
    module.addCertificate("t\x1bwo", "no certificate");
    expectJson({"cert", "list"}, "cert list",
               R"("certificates":[{"index":0,"name":"one","id":"6f6e65","label":"label",)"
               R"("subject":"CN=expired","issuer":"CN=expired","commonName":"expired",)"
               R"("serialNumber":"02","notBefore":"2020-01-01T00:00:00Z",)"
               R"("notAfter":"2021-01-01T00:00:00Z","expired":true,"keyType":"RSA",)"
               R"("keyBits":1024},{"index":1,"name":"t\u001bwo","id":"741b776f","label":""}])");
}

TEST_F(CertReportTest, CertificateThatIsNoneIsListedSo) {
    module.addCertificate("t\x1bwo", "2");
    expectOutput({"cert", "list"}, "0\tt?wo\tnot readable as X.509\t-\t-\t-\t-\tid:741b776f\n");
}

TEST_F(CertReportTest, CertificatesBehindOneWithoutAnIdAreCounted) {
    addCertificate("one", kRsaCertificate);
    const CK_OBJECT_HANDLE without = module->addObject();
    for (const CK_ATTRIBUTE_TYPE type : {CKA_CLASS, CKA_TOKEN, CKA_CERTIFICATE_TYPE}) {
        const CK_ULONG number = type == CKA_CERTIFICATE_TYPE ? CKC_X_509 : 1;
        module->setAttribute(without, type, &number, type == CKA_TOKEN ? 1 : sizeof number);
    }
    addCertificate("two", kRsaCertificate);
    const CommandResult result = zrkey({"cert", "list"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(1, std::count(result.output.begin(), result.output.end(), '\n'));
    EXPECT_EQ(
        "zrkey: certificates that are not shown: 2; the list of the object model ends at one "
        "without an ID\n",
        result.errors);
}

TEST_F(CertReportTest, ListMakesOneWalkOfItsOwn) {
    addCertificate("one", kRsaCertificate);
    EXPECT_EQ(0, zrkey({"cert", "list"}).exitCode);
    std::vector<std::string> own;
    for (const std::string& call : module.takeCalls()) {
        if (call.starts_with("C_OpenSession") || call.find("(2") != std::string::npos) {
            own.push_back(call);
        }
    }
    EXPECT_EQ(
        (std::vector<std::string>{
            "C_OpenSession(10, 6, set, null)", "C_OpenSession(10, 4, null, null)",
            "C_FindObjectsInit(2, {0x0=1 0x1=1})", "C_FindObjects(2, 64)", "C_FindObjects(2, 64)",
            "C_FindObjectsFinal(2)", "C_GetAttributeValue(2, 3, {0x80 0x102 0x3 0x11})",
            "C_GetAttributeValue(2, 3, {0x80[] 0x102[] 0x3 0x11[815]})", "C_CloseSession(2)"}),
        own);
}

TEST_F(CertReportTest, CertificatesThatChangeBetweenTheWalksAreNotListed) {
    const std::string changed =
        "list the certificates: the certificates on the token changed meanwhile; try again";
    const CK_OBJECT_HANDLE first = addCertificate("one", kRsaCertificate);
    addCertificate("two", kP256Certificate);
    addCertificate("three", kP384Certificate);
    // The library makes the first search, and the command the second.
    module->settings().vanishingObject = first;
    module->settings().vanishingSearch = 2;
    expectFailure({"cert", "list"}, 4, changed);
    module->settings().vanishingObject = addCertificate("last", kRsaCertificate);
    module->settings().vanishingSearch = 2;
    expectFailure({"cert", "read", "--cert", "two"}, 4, changed);
}

TEST_F(CertReportTest, ObjectThatVanishesDuringTheWalkIsAChange) {
    addCertificate("one", kRsaCertificate);
    // The library reads it with two calls.
    module->fail("C_GetAttributeValue", 3, CKR_OBJECT_HANDLE_INVALID);
    expectFailure(
        {"cert", "list"}, 4,
        "list the certificates: the certificates on the token changed meanwhile; try again");
}

TEST_F(CertReportTest, FailedCallIsNamed) {
    addCertificate("one", kRsaCertificate);
    const std::string asked = "list the certificates: the module's ";
    const std::string removed =
        " returned CKR_DEVICE_REMOVED (0x00000032); the token was removed; connect it and try "
        "again";
    for (const auto& [function, nth] :
         {std::pair{"C_OpenSession", 2u}, std::pair{"C_FindObjectsInit", 2u},
          std::pair{"C_FindObjects", 3u}, std::pair{"C_FindObjectsFinal", 2u},
          std::pair{"C_GetAttributeValue", 3u}, std::pair{"C_GetAttributeValue", 4u}}) {
        module->fail(function, nth, CKR_DEVICE_REMOVED);
        expectFailure({"cert", "list"}, 1, asked + function + removed);
        EXPECT_EQ(0u, module->openSessions());
    }
    module->fail("C_OpenSession", 2, 0xB1);
    expectFailure({"cert", "list"}, 1,
                  asked +
                      "C_OpenSession returned CKR_SESSION_COUNT (0x000000B1); end other "
                      "programs that use the token");
}

TEST_F(CertReportTest, HostileLengthIsAFailure) {
    addCertificate("one", kRsaCertificate);
    module->settings().lyingType = CKA_VALUE;
    module->settings().lyingLength = CK_UNAVAILABLE_INFORMATION - 1;
    module->settings().lie = RecordingModule::Settings::kAlways;
    expectFailure({"cert", "list"}, 1,
                  "list the certificates: the module's C_GetAttributeValue returned an answer that "
                  "cannot be right; the module is faulty; look for a newer one");
}

TEST_F(CertReportTest, CertificateIsReadInEachFormat) {
    module.addCertificate("one", "abc");
    expectOutput({"cert", "read"}, "abc");
    expectOutput({"cert", "read", "--format", "pem"},
                 "-----BEGIN CERTIFICATE-----\nYWJj\n-----END CERTIFICATE-----\n");
    expectJson({"cert", "read"}, "cert read", R"("certificate":"YWJj","name":"one")");
    expectFailure({"cert", "read", "--format", "text"}, 1,
                  "show the certificate \"one\": it is not readable as X.509; read it without "
                  "--format text");
}

TEST_F(CertReportTest, CertificateIsReadAsText) {
    addCertificate("one", kExpiredCertificate);
    const CommandResult result = zrkey({"cert", "read", "--format", "text"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(0u, result.output.find("subject:\tCN=expired\nissuer:\tCN=expired\n"));
}

TEST_F(CertReportTest, CertificateIsChosenByIdCommonNameHexIdOrIndex) {
    addCertificate("one", kRsaCertificate);
    addCertificate(std::string("\0\xab", 2), kP256Certificate);
    addCertificate("p256", kP384Certificate);
    EXPECT_EQ(sample(kRsaCertificate), read({"--cert", "one"}));
    EXPECT_EQ(sample(kRsaCertificate), read({"--cert", "Erika Mustermann"}));
    EXPECT_EQ(sample(kRsaCertificate), read({"--cert", "id:6F6e65"}));
    EXPECT_EQ(sample(kP256Certificate), read({"--cert", "id:00ab"}));
    EXPECT_EQ(sample(kP256Certificate), read({"--cert", "index:1"}));
    EXPECT_EQ(sample(kP256Certificate), read({"--cert-index", "1"}));
    // The ID comes before the common name.
    EXPECT_EQ(sample(kP384Certificate), read({"--cert", "p256"}));
    EXPECT_EQ("", read({"--cert", "Erika"}));
}

TEST_F(CertReportTest, ChoiceThatMatchesNothingListsWhatIsThere) {
    addCertificate("one", kRsaCertificate);
    module.addCertificate("two", "2");
    const std::string there = std::string("the certificates are: 0 \"one\" id:6f6e65 (") + kErika +
                              "), 1 \"two\" id:74776f; " + kAdvice;
    expectFailure({"cert", "read", "--cert", "three"}, 4,
                  "find the certificate \"three\": " + there);
    expectFailure({"cert", "read", "--cert", "id:aa"}, 4,
                  "find the certificate with the ID aa: " + there);
    expectFailure({"cert", "read", "--cert", "index:2"}, 4,
                  "find the certificate with index 2: " + there);
    expectFailure({"cert", "read", "--cert-index", "2"}, 4,
                  "find the certificate with index 2: " + there);
}

TEST_F(CertReportTest, ChoiceThatMatchesSeveralListsThem) {
    addCertificate("one", kRsaCertificate);
    addCertificate("two", kRsaCertificate);
    module.addCertificate("three", "3");
    const std::string both = std::string("several certificates match: 0 \"one\" id:6f6e65 (") +
                             kErika + "), 1 \"two\" id:74776f (" + kErika + ")";
    expectFailure({"cert", "read", "--cert", "Erika Mustermann"}, 4,
                  "find the certificate \"Erika Mustermann\": " + both + "; " + kAdvice);
    expectFailure({"cert", "read"}, 4,
                  "choose a certificate: " + both + ", 2 \"three\" id:7468726565; " + kAdvice);
}

TEST_F(CertReportTest, SharedIdNeedsTheIndex) {
    module.addCertificate("one", "1");
    module.addCertificate("one", "2");
    for (const char* choice : {"one", "id:6f6e65"}) {
        EXPECT_EQ(4, zrkey({"cert", "read", "--cert", choice}).exitCode);
    }
    EXPECT_EQ("2", read({"--cert", "index:1"}));
}

TEST_F(CertReportTest, MalformedChoiceIsWrongUsage) {
    const std::string usage = "cert read [OPTIONS]";
    expectUsageError({"cert", "read", "--cert", "id:0g"},
                     "--cert: what follows id: must be hexadecimal", usage);
    expectUsageError({"cert", "read", "--cert", "index:-1"},
                     "--cert: an index must be a number from 0 to 2147483647", usage);
}

TEST_F(CertReportTest, TokenWithoutCertificatesSuggestsALogin) {
    expectFailure({"cert", "read"}, 4,
                  "choose a certificate: the token shows no certificate; private certificates are "
                  "visible only after a login: give --pin");
}

}  // namespace
}  // namespace zr::test
