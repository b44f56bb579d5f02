// What file, cert, sign, verify and digest say, to the last character.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

constexpr const char* kFailed = "the library answered E_FAIL (0x80004005); ";

class ObjectReportTest : public CommandTest {
protected:
    ObjectReportTest() {
        writeFile("data.bin", "data");
        writeFile("signature.bin", std::string("\0\1\2\3", 4));
        module->settings().signatureLength = 4;
    }

    /// A certificate with its two keys.
    void addCertificate(const std::string& id, const std::string& value) {
        module.addCertificate(id, value);
        module.addKey(CKO_PRIVATE_KEY, id);
        module.addKey(CKO_PUBLIC_KEY, id);
    }
};

TEST_F(ObjectReportTest, AFileIsCreatedFoundReadAndDeleted) {
    expectOutput(withPin({"file", "create", "7"}), "created 7, found as 8\n");
    expectOutput(withPin({"file", "exists", "8"}), "8 exists\n");
    expectOutput(withPin({"file", "read", "8"}), "");
    expectOutput(withPin({"file", "delete", "8"}), "deleted 8\n");
}

TEST_F(ObjectReportTest, AFileInJson) {
    expectJson(withPin({"file", "create", "7"}), "file create", R"("name":"7","foundAs":"8")");
    expectJson(withPin({"file", "exists", "8"}), "file exists", R"("name":"8","exists":true)");
    module.addData("8", "abc");
    expectJson(withPin({"file", "read", "9"}), "file read", R"("content":"YWJj")");
    expectJson(withPin({"file", "delete", "9"}), "file delete", R"("name":"9")");
}

TEST_F(ObjectReportTest, AFileInTheFormats) {
    module.addData("8", "abc");
    expectOutput(withPin({"file", "read", "9"}), "abc");
    expectOutput(withPin({"file", "read", "9", "--format", "raw"}), "abc");
    expectOutput(withPin({"file", "read", "9", "--format", "hex"}), "616263\n");
    expectOutput(withPin({"file", "read", "9", "--format", "base64"}), "YWJj\n");
    expectOutput(withPin({"file", "read", "9", "--format", "pem"}),
                 "-----BEGIN DATA-----\nYWJj\n-----END DATA-----\n");
    expectOutput(withPin({"file", "read", "9", "--output", "content.bin"}), "");
    EXPECT_EQ("abc", readFile("content.bin"));
}

TEST_F(ObjectReportTest, AFileThatIsNotFoundSaysWhatNamesMean) {
    const std::string advice = "a file created as N is found as N + 1";
    const std::string more = advice + ", and private files are seen after a login: give --pin";
    expectFailure(withPin({"file", "exists", "7"}), 4, "find the file 7: " + (kFailed + advice));
    expectFailure({"file", "exists", "7"}, 4, "find the file 7: " + (kFailed + more));
    expectFailure(withPin({"file", "read", "7"}), 4, "open the file 7: " + (kFailed + advice));
    expectFailure({"file", "read", "7"}, 4, "open the file 7: " + (kFailed + more));
    expectFailure(withPin({"file", "delete", "7"}), 4, "find the file 7: " + (kFailed + advice));
    expectFailure({"file", "delete", "7"}, 4, "find the file 7: " + (kFailed + more));
}

TEST_F(ObjectReportTest, AFileThatIsNotCreatedSaysWhatIsMissing) {
    module->fail("C_CreateObject", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"file", "create", "7"}), 1,
                  std::string("create the file 7: ") + kFailed +
                      "the token may be full or written by its user only");
    expectFailure({"file", "create", "7"}, 7,
                  std::string("create the file 7: ") + kFailed + "log in for it: give --pin");
}

TEST_F(ObjectReportTest, AFileThatIsNotDeletedSaysWhatIsMissing) {
    module.addData("7", "abc");
    module->fail("C_DestroyObject", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"file", "delete", "8"}), 1,
                  std::string("delete the file 8: ") + kFailed + "the file may be protected");
    expectFailure({"file", "delete", "8"}, 7,
                  std::string("delete the file 8: ") + kFailed + "log in for it: give --pin");
}

TEST_F(ObjectReportTest, CertificatesAreListed) {
    module.addCertificate("one", "1");
    module.addCertificate("t\x1bwo", "2");
    expectOutput({"cert", "list"}, "0\tone\n1\tt?wo\n");
    expectJson({"cert", "list"}, "cert list",
               R"("certificates":[{"index":0,"name":"one"},{"index":1,"name":"t\u001bwo"}])");
}

TEST_F(ObjectReportTest, ACertificateIsReadInItsFormats) {
    addCertificate("one", "abc");
    expectOutput({"cert", "read"}, "abc");
    expectOutput({"cert", "read", "--format", "pem"},
                 "-----BEGIN CERTIFICATE-----\nYWJj\n-----END CERTIFICATE-----\n");
    expectJson({"cert", "read"}, "cert read", R"("certificate":"YWJj","name":"one")");
}

TEST_F(ObjectReportTest, ACertificateIsChosenByNameOrIndex) {
    addCertificate("one", "1");
    addCertificate("two", "2");
    expectOutput({"cert", "read", "--cert", "two"}, "2");
    expectOutput({"cert", "read", "--cert-index", "0"}, "1");
    expectOutput({"cert", "read", "--cert-index", "1"}, "2");
    const std::string there =
        "there are: 0 \"one\", 1 \"two\"; choose one by --cert or --cert-index";
    expectFailure({"cert", "read"}, 4, "choose a certificate: " + there);
    expectFailure({"cert", "read", "--cert", "three"}, 4,
                  "find the certificate \"three\": " + there);
    expectFailure({"cert", "read", "--cert-index", "2"}, 4,
                  "find the certificate with index 2: " + there);
}

TEST_F(ObjectReportTest, WithoutACertificateALoginMayShowSome) {
    expectFailure({"cert", "read"}, 4,
                  "choose a certificate: the token shows none; private ones are shown after a "
                  "login: give --pin");
}

TEST_F(ObjectReportTest, ANameOfTwoCertificatesChoosesNeither) {
    addCertificate("one", "1");
    addCertificate("one", "2");
    expectFailure({"cert", "read", "--cert-index", "1"}, 4,
                  "open the certificate \"one\": several have this name; give each certificate "
                  "and its keys an ID of their own");
}

TEST_F(ObjectReportTest, ACertificateThatDoesNotOpenSaysWhy) {
    const std::string id(128, 'i');
    addCertificate(id, "1");
    const CommandResult list = zrkey({"cert", "list"});
    ASSERT_EQ(0, list.exitCode);
    const std::string name = list.output.substr(2, list.output.size() - 3);
    const CommandResult result = zrkey({"cert", "read"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_EQ("zrkey: cannot open the certificate \"" + name +
                  "\": the library answered E_FAIL (0x80004005); its ID may be longer than 127 "
                  "bytes; see what cert list shows\n",
              result.errors);
}

TEST_F(ObjectReportTest, ACertificateThatIsNotReadSaysSo) {
    addCertificate("one", "1");
    // Two of the calls are those of GetCertData: for the length, for the value.
    std::vector<std::string> lines;
    for (unsigned int nth = 1; nth < 20; ++nth) {
        module->fail("C_GetAttributeValue", nth, CKR_DEVICE_REMOVED);
        lines.push_back(zrkey({"cert", "read"}).errors);
    }
    EXPECT_EQ(2, std::count(lines.begin(), lines.end(),
                            "zrkey: cannot read the certificate \"one\": the library answered "
                            "E_FAIL (0x80004005); look whether the token is still connected\n"));
}

TEST_F(ObjectReportTest, ASignatureInItsFormats) {
    addCertificate("one", "1");
    const std::vector<std::string> sign = withPin({"sign", "-i", "data.bin"});
    expectOutput(sign, std::string("\0\1\2\3", 4));
    std::vector<std::string> pem = sign;
    pem.insert(pem.end(), {"--format", "pem"});
    expectOutput(pem, "-----BEGIN SIGNATURE-----\nAAECAw==\n-----END SIGNATURE-----\n");
    expectJson(sign, "sign", R"("signature":"AAECAw==","algorithm":"SHA1WithRSA","name":"one")");
}

TEST_F(ObjectReportTest, ASignatureThatIsNotMadeSaysWhatIsMissing) {
    addCertificate("one", "1");
    expectFailure({"sign", "-i", "data.bin"}, 7,
                  "sign with the key of \"one\": the library answered "
                  "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005); log in for it: give --pin");
    module->fail("C_Sign", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"sign", "-i", "data.bin"}), 1,
                  std::string("sign with the key of \"one\": ") + kFailed +
                      "look whether the token holds its private RSA key");
}

TEST_F(ObjectReportTest, ASignatureIsVerified) {
    addCertificate("one", "1");
    const std::vector<std::string> verify =
        withPin({"verify", "-i", "data.bin", "--signature", "signature.bin"});
    expectOutput(verify, "verified by the key of \"one\"\n");
    expectJson(verify, "verify", R"("verified":true,"algorithm":"SHA1WithRSA","name":"one")");
}

TEST_F(ObjectReportTest, ASignatureThatIsNotVerifiedSaysWhy) {
    addCertificate("one", "1");
    expectFailure({"verify", "-i", "data.bin", "--signature", "signature.bin"}, 7,
                  "verify the signature by the key of \"one\": the library answered "
                  "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005); log in for it: give --pin");
    expectFailure(withPin({"verify", "-i", "data.bin", "--signature", "data.bin"}), 6,
                  std::string("verify the signature by the key of \"one\": ") + kFailed +
                      "data or signature differ from what was signed, or the token lacks the "
                      "public key");
}

TEST_F(ObjectReportTest, ADigestInItsFormats) {
    // The digest of "data" as md5sum computes it.
    expectOutput({"digest", "-i", "data.bin"}, "8d777f385d3dfec8815d20f7496026dc\n");
    expectOutput({"digest", "-i", "data.bin", "--format", "pem"},
                 "-----BEGIN DIGEST-----\njXd/OF09/siBXSD3SWAm3A==\n-----END DIGEST-----\n");
    expectJson({"digest", "-i", "data.bin"}, "digest",
               R"("digest":"jXd/OF09/siBXSD3SWAm3A==","method":"MD5")");
}

TEST_F(ObjectReportTest, AnotherDigestSaysWhichThereIs) {
    expectFailure({"digest", "-i", "data.bin", "--method", "SHA1"}, 2,
                  "digest by \"SHA1\": the library answered E_INVALIDARG (0x80070057); MD5 is the "
                  "one method there is");
}

TEST_F(ObjectReportTest, InputAndOutputThatTheSystemRefusesAreNamed) {
    expectFailure({"digest", "-i", "missing.bin"}, 1,
                  "read \"missing.bin\": the system refused it; look whether it is there and "
                  "readable");
    expectFailure({"digest", "-i", "data.bin", "-o", "missing/digest.txt"}, 1,
                  "write to \"missing/digest.txt\": the system refused it; the token's part is "
                  "done; look for space and rights");
}

TEST_F(ObjectReportTest, StandardInputGivesItsBytesOnce) {
    const std::string line =
        "read standard input twice: it gives its bytes once; name a file by -i, or take the PIN "
        "from elsewhere";
    expectFailure({"sign", "--pin", "-"}, 2, line);
    expectFailure({"sign", "--pin", "fd:0"}, 2, line);
    expectFailure({"verify", "--signature", "-"}, 2, line);
    expectFailure({"verify", "--signature", "-", "-i", "data.bin", "--pin", "-"}, 2, line);
}

}  // namespace
}  // namespace zr::test
