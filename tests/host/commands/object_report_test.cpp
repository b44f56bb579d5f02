// The reports of file, cert, sign, verify and digest, to the last character.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

constexpr const char* kFailed = "the library returned E_FAIL (0x80004005); ";

class ObjectReportTest : public CommandTest {
protected:
    ObjectReportTest() {
        writeFile("data.bin", "data");
        writeFile("signature.bin", std::string("\0\1\2\3", 4));
        module->settings().signatureLength = 4;
    }

    /// A certificate with its two keys.
    CK_OBJECT_HANDLE addCertificate(const std::string& id, const std::string& value) {
        const CK_OBJECT_HANDLE certificate = module.addCertificate(id, value);
        module.addKey(CKO_PRIVATE_KEY, id);
        module.addKey(CKO_PUBLIC_KEY, id);
        return certificate;
    }
};

TEST_F(ObjectReportTest, FileIsCreatedFoundReadAndDeleted) {
    expectOutput(withPin({"file", "create", "7"}), "created 7, found as 8\n");
    expectOutput(withPin({"file", "exists", "8"}), "8 exists\n");
    expectOutput(withPin({"file", "read", "8"}), "");
    expectOutput(withPin({"file", "delete", "8"}), "deleted 8\n");
}

TEST_F(ObjectReportTest, FileCommandsReportInJson) {
    expectJson(withPin({"file", "create", "7"}), "file create", R"("name":"7","foundAs":"8")");
    expectJson(withPin({"file", "exists", "8"}), "file exists", R"("name":"8","exists":true)");
    module.addData("8", "abc");
    expectJson(withPin({"file", "read", "9"}), "file read", R"("content":"YWJj")");
    expectJson(withPin({"file", "delete", "9"}), "file delete", R"("name":"9")");
}

TEST_F(ObjectReportTest, FileContentIsWrittenInEachFormat) {
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

TEST_F(ObjectReportTest, MissingFileReportExplainsHowFilesAreFound) {
    const std::string advice = "a file created as N is found as N + 1";
    const std::string more =
        advice + ", and private files are visible only after a login: give --pin";
    expectFailure(withPin({"file", "exists", "7"}), 4, "find the file 7: " + (kFailed + advice));
    expectFailure({"file", "exists", "7"}, 4, "find the file 7: " + (kFailed + more));
    expectFailure(withPin({"file", "read", "7"}), 4, "open the file 7: " + (kFailed + advice));
    expectFailure({"file", "read", "7"}, 4, "open the file 7: " + (kFailed + more));
    expectFailure(withPin({"file", "delete", "7"}), 4, "find the file 7: " + (kFailed + advice));
    expectFailure({"file", "delete", "7"}, 4, "find the file 7: " + (kFailed + more));
}

TEST_F(ObjectReportTest, RefusedCreateFileSaysWhatIsMissing) {
    module->fail("C_CreateObject", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"file", "create", "7"}), 1,
                  std::string("create the file 7: ") + kFailed +
                      "the token may be full, or allow only its user to write");
    expectFailure({"file", "create", "7"}, 7,
                  std::string("create the file 7: ") + kFailed + "log in first: give --pin");
}

TEST_F(ObjectReportTest, RefusedDeleteFileSaysWhatIsMissing) {
    module.addData("7", "abc");
    module->fail("C_DestroyObject", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"file", "delete", "8"}), 1,
                  std::string("delete the file 8: ") + kFailed + "the file may be protected");
    expectFailure({"file", "delete", "8"}, 7,
                  std::string("delete the file 8: ") + kFailed + "log in first: give --pin");
}

TEST_F(ObjectReportTest, CertificatesAreListed) {
    module.addCertificate("one", "1");
    module.addCertificate("t\x1bwo", "2");
    expectOutput({"cert", "list"}, "0\tone\n1\tt?wo\n");
    expectJson({"cert", "list"}, "cert list",
               R"("certificates":[{"index":0,"name":"one"},{"index":1,"name":"t\u001bwo"}])");
}

TEST_F(ObjectReportTest, CertificateIsReadInEachFormat) {
    addCertificate("one", "abc");
    expectOutput({"cert", "read"}, "abc");
    expectOutput({"cert", "read", "--format", "pem"},
                 "-----BEGIN CERTIFICATE-----\nYWJj\n-----END CERTIFICATE-----\n");
    expectJson({"cert", "read"}, "cert read", R"("certificate":"YWJj","name":"one")");
}

TEST_F(ObjectReportTest, CertificateIsChosenByNameOrIndex) {
    addCertificate("one", "1");
    addCertificate("two", "2");
    expectOutput({"cert", "read", "--cert", "two"}, "2");
    expectOutput({"cert", "read", "--cert-index", "0"}, "1");
    expectOutput({"cert", "read", "--cert-index", "1"}, "2");
    const std::string there =
        "the certificates are: 0 \"one\", 1 \"two\"; choose one with --cert or --cert-index";
    expectFailure({"cert", "read"}, 4, "choose a certificate: " + there);
    expectFailure({"cert", "read", "--cert", "three"}, 4,
                  "find the certificate \"three\": " + there);
    expectFailure({"cert", "read", "--cert-index", "2"}, 4,
                  "find the certificate with index 2: " + there);
}

TEST_F(ObjectReportTest, TokenWithoutCertificatesSuggestsALogin) {
    expectFailure({"cert", "read"}, 4,
                  "choose a certificate: the token shows no certificate; private certificates are "
                  "visible only after a login: give --pin");
}

TEST_F(ObjectReportTest, ReadOfACertificateWithASharedNameFails) {
    addCertificate("one", "1");
    addCertificate("one", "2");
    expectFailure(
        {"cert", "read", "--cert-index", "1"}, 4,
        "open the certificate \"one\": several certificates have this name; give each certificate "
        "and its keys an ID of their own");
}

TEST_F(ObjectReportTest, CertificateWithAnOverlongIdDoesNotOpen) {
    const std::string id(128, 'i');
    addCertificate(id, "1");
    const CommandResult list = zrkey({"cert", "list"});
    ASSERT_EQ(0, list.exitCode);
    const std::string name = list.output.substr(2, list.output.size() - 3);
    const CommandResult result = zrkey({"cert", "read"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_EQ("zrkey: cannot open the certificate \"" + name +
                  "\": the library returned E_FAIL (0x80004005); its ID may be longer than 127 "
                  "bytes\n",
              result.errors);
}

TEST_F(ObjectReportTest, CertificateThatTookThePositionOfTheChosenOneIsNotUsed) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"cert", "read"},
          {"sign", "-i", "data.bin"},
          {"verify", "-i", "data.bin", "--signature", "signature.bin"}}) {
        module->reset();
        module->settings().signatureLength = 4;
        const CK_OBJECT_HANDLE first = addCertificate("one", "1");
        addCertificate("two", "2");
        addCertificate("three", "3");
        // The names are listed by the first search; the second one finds "three" in the place of
        // "two".
        module->settings().vanishingObject = first;
        module->settings().vanishingSearch = 2;
        std::vector<std::string> words = withPin(command);
        words.insert(words.end(), {"--cert", "two"});
        expectFailure(words, 4,
                      "open the certificate \"two\": the certificates on the token changed "
                      "meanwhile; try again");
        EXPECT_EQ(0u, module.count("C_Sign") + module.count("C_Verify"));
        EXPECT_EQ(0, zrkey(words).exitCode) << command.front();
    }
}

TEST_F(ObjectReportTest, CertificateThatVanishesBeforeItIsOpenedIsReported) {
    const CK_OBJECT_HANDLE only = addCertificate("one", "1");
    module->settings().vanishingObject = only;
    module->settings().vanishingSearch = 2;
    expectFailure({"cert", "read"}, 4,
                  std::string("open the certificate \"one\": ") + kFailed +
                      "the certificates on the token may have changed; try again");
}

TEST_F(ObjectReportTest, CertificateReadFailureIsReported) {
    addCertificate("one", "1");
    // GetCertData makes two of the calls: for the length and for the value.
    std::vector<std::string> lines;
    for (unsigned int nth = 1; nth < 20; ++nth) {
        module->fail("C_GetAttributeValue", nth, CKR_DEVICE_REMOVED);
        lines.push_back(zrkey({"cert", "read"}).errors);
    }
    EXPECT_EQ(2, std::count(lines.begin(), lines.end(),
                            "zrkey: cannot read the certificate \"one\": the library returned "
                            "E_FAIL (0x80004005); check that the token is still connected\n"));
}

TEST_F(ObjectReportTest, SignatureIsWrittenInEachFormat) {
    addCertificate("one", "1");
    const std::vector<std::string> sign = withPin({"sign", "-i", "data.bin"});
    expectOutput(sign, std::string("\0\1\2\3", 4));
    std::vector<std::string> pem = sign;
    pem.insert(pem.end(), {"--format", "pem"});
    expectOutput(pem, "-----BEGIN SIGNATURE-----\nAAECAw==\n-----END SIGNATURE-----\n");
    expectJson(sign, "sign", R"("signature":"AAECAw==","algorithm":"SHA1WithRSA","name":"one")");
}

TEST_F(ObjectReportTest, RefusedSignatureSaysWhatIsMissing) {
    addCertificate("one", "1");
    expectFailure({"sign", "-i", "data.bin"}, 7,
                  "sign with the key of \"one\": the library returned "
                  "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005); log in first: give --pin");
    module->fail("C_Sign", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"sign", "-i", "data.bin"}), 1,
                  std::string("sign with the key of \"one\": ") + kFailed +
                      "check that the token has its private RSA key");
}

TEST_F(ObjectReportTest, SignatureVerifies) {
    addCertificate("one", "1");
    const std::vector<std::string> verify =
        withPin({"verify", "-i", "data.bin", "--signature", "signature.bin"});
    expectOutput(verify, "verified by the key of \"one\"\n");
    expectJson(verify, "verify", R"("verified":true,"algorithm":"SHA1WithRSA","name":"one")");
}

TEST_F(ObjectReportTest, RefusedVerificationSaysWhy) {
    addCertificate("one", "1");
    expectFailure({"verify", "-i", "data.bin", "--signature", "signature.bin"}, 7,
                  "verify the signature with the key of \"one\": the library returned "
                  "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005); log in first: give --pin");
    expectFailure(withPin({"verify", "-i", "data.bin", "--signature", "data.bin"}), 6,
                  std::string("verify the signature with the key of \"one\": ") + kFailed +
                      "the data or the signature was changed, or the token lacks the public key");
}

TEST_F(ObjectReportTest, UnreadableInputAndUnwritableOutputShowTheSystemsError) {
    expectFailure({"digest", "-i", "missing.bin"}, 1,
                  "read \"missing.bin\": No such file or directory; check the path and its "
                  "permissions");
    expectFailure({"digest", "-i", "data.bin", "-o", "missing/digest.txt"}, 1,
                  "write to \"missing/digest.txt\": No such file or directory; nothing was done; "
                  "check the path and its permissions");
}

TEST_F(ObjectReportTest, UnwritableOutputFailsBeforeTheTokenWorks) {
    addCertificate("one", "1");
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"sign", "-i", "data.bin"},
          {"cert", "read"},
          {"digest", "-i", "data.bin"},
          {"file", "read", "8"}}) {
        std::vector<std::string> words = command.front() == "digest" ? command : withPin(command);
        words.insert(words.end(), {"-o", "missing/output.bin"});
        EXPECT_EQ(1, zrkey(words).exitCode) << command.front();
    }
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(ObjectReportTest, FailedCommandLeavesTheOutputFileAsItWas) {
    writeFile("kept.bin", "kept");
    for (const char* name : {"kept.bin", "new.bin"}) {
        EXPECT_EQ(4, zrkey({"cert", "read", "-o", name}).exitCode);
    }
    EXPECT_EQ("kept", readFile("kept.bin"));
    EXPECT_FALSE(std::filesystem::exists("new.bin"));
}

TEST_F(ObjectReportTest, TwoReadsOfStandardInputAreWrongUsage) {
    const std::string line =
        "read standard input twice: its data can be read only once; name a file with -i, or give "
        "another source for the PIN";
    expectFailure({"sign", "--pin", "-"}, 2, line);
    expectFailure({"sign", "--pin", "fd:0"}, 2, line);
    expectFailure({"verify", "--signature", "-"}, 2, line);
    expectFailure({"verify", "--signature", "-", "-i", "data.bin", "--pin", "-"}, 2, line);
}

}  // namespace
}  // namespace zr::test
