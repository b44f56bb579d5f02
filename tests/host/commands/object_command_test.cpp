// zrkey file, cert, sign, verify and digest on a real token, with openssl and pkcs11-tool before
// and after.
#include <regex>

#include "tests/host/command_token_test.h"

namespace zr::test {
namespace {

using ObjectCommandTest = CommandTokenTest;

TEST_F(ObjectCommandTest, FileCreatedUnderANumberIsFoundUnderTheNext) {
    // The object stays: pkcs11-tool looks for it afterwards.
    expectOutput(zrkeyLoggedIn({"file", "create", "7"}), "created 7, found as 8\n");
    expectOutput(zrkeyLoggedIn({"file", "exists", "8"}), "8 exists\n");
    expectOutput(zrkeyLoggedIn({"file", "read", "8"}), "");
    expectFailure(zrkeyLoggedIn({"file", "exists", "7"}), 4,
                  "a file created as N is found as N + 1");
}

TEST_F(ObjectCommandTest, DeletedFileIsNotFoundAgain) {
    EXPECT_EQ(0, zrkeyLoggedIn({"file", "create", "20"}).exitCode);
    expectOutput(zrkeyLoggedIn({"file", "delete", "21"}), "deleted 21\n");
    expectFailure(zrkeyLoggedIn({"file", "delete", "21"}), 4, "cannot find the file 21");
}

TEST_F(ObjectCommandTest, FileOfAnotherProgramIsReadUnchanged) {
    const std::string content = readTokenFile("content.bin");
    ASSERT_EQ(256u, content.size());
    expectOutput(zrkeyLoggedIn({"file", "read", "101"}), content);
    expectOutput(zrkeyLoggedIn({"file", "read", "101", "-o", "content.bin"}), "");
    EXPECT_EQ(content, readFile("content.bin"));
    const CommandResult hex = zrkeyLoggedIn({"file", "read", "101", "--format", "hex"});
    EXPECT_EQ(0u, hex.output.find("000102030405060708090a0b"));
    EXPECT_EQ(513u, hex.output.size());
}

TEST_F(ObjectCommandTest, MissingFileIsNotRead) {
    expectFailure(zrkeyLoggedIn({"file", "read", "500"}), 4, "cannot open the file 500");
    expectFailure(zrkey({"file", "read", "500"}), 4, "give --pin");
}

TEST_F(ObjectCommandTest, CreateFileWithoutALoginFails) {
    expectFailure(zrkey({"file", "create", "30"}), 7, "log in first");
}

TEST_F(ObjectCommandTest, NameThatIsNotANumberIsWrongUsage) {
    for (const char* name : {"0", "65537", "abc", "7x", "07", "+7", "99999999999"}) {
        expectFailure(zrkeyLoggedIn({"file", "read", name}), 2, "a number from 1 to 65536");
    }
}

TEST_F(ObjectCommandTest, CreateFileWithANameThatCannotBeFoundIsWrongUsage) {
    expectFailure(zrkeyLoggedIn({"file", "create", "65536"}), 2, "a number from 1 to 65535");
    expectOutput(zrkeyLoggedIn({"file", "create", "65535"}), "created 65535, found as 65536\n");
    expectOutput(zrkeyLoggedIn({"file", "delete", "65536"}), "deleted 65536\n");
}

TEST_F(ObjectCommandTest, UnwritableOutputIsAFailure) {
    expectFailure(zrkeyLoggedIn({"file", "read", "101", "-o", "no/folder/file"}), 1,
                  "cannot write to \"no/folder/file\"");
}

TEST_F(ObjectCommandTest, CertificatesAreListedByNameAndSubject) {
    // The set-up makes a new certificate each time.
    const CommandResult list = zrkey({"cert", "list"});
    EXPECT_EQ(0, list.exitCode);
    EXPECT_TRUE(std::regex_match(
        list.output,
        std::regex("0\tcontainer1\tCN=ZRKey Test\tCN=ZRKey Test\tuntil [0-9]{4}-[0-9]{2}-"
                   "[0-9]{2}\t[0-9a-f]+\tRSA 2048\tid:636f6e7461696e657231\n")))
        << list.output;
    const CommandResult json = zrkey({"cert", "list", "--json"});
    EXPECT_EQ(0, json.exitCode);
    EXPECT_TRUE(json.output.starts_with(
        "{\"schema\":1,\"command\":\"cert list\",\"result\":{\"name\":\"S_OK\",\"hex\":"
        "\"0x00000000\"},\"certificates\":[{\"index\":0,\"name\":\"container1\",\"id\":"
        "\"636f6e7461696e657231\",\"label\":\"container1\",\"subject\":\"CN=ZRKey Test\","))
        << json.output;
}

TEST_F(ObjectCommandTest, CertificateEqualsTheOneMadeByOpenssl) {
    expectOutput(zrkey({"cert", "read"}), readTokenFile("certificate.der"));
    expectOutput(zrkey({"cert", "read", "--cert", "container1", "--format", "pem"}),
                 readTokenFile("certificate.pem"));
    expectOutput(zrkey({"cert", "read", "--cert-index", "0"}), readTokenFile("certificate.der"));
}

TEST_F(ObjectCommandTest, MissingCertificateIsNotRead) {
    expectFailure(zrkey({"cert", "read", "--cert", "container2"}), 4,
                  "the certificates are: 0 \"container1\"");
    expectFailure(zrkey({"cert", "read", "--cert-index", "1"}), 4, "index 1");
}

TEST_F(ObjectCommandTest, SignWritesASignatureForOpenssl) {
    expectOutput(zrkeyLoggedIn({"sign", "-o", tokenFile("by-token.bin")}, "signed by the token"),
                 "");
    EXPECT_EQ(256u, readTokenFile("by-token.bin").size());
}

TEST_F(ObjectCommandTest, SignedDataVerifiesAndChangedDataDoesNot) {
    const std::string data("\0\r\n\x1a\xff", 5);
    writeFile("data.bin", data);
    expectOutput(zrkeyLoggedIn({"sign", "-i", "data.bin", "-o", "signature.bin"}), "");
    expectOutput(zrkeyLoggedIn({"verify", "--signature", "signature.bin"}, data),
                 "verified by the key of \"container1\"\n");
    expectFailure(zrkeyLoggedIn({"verify", "--signature", "signature.bin"}, data + "x"), 6,
                  "the library returned E_FAIL (0x80004005)");
    expectFailure(zrkeyLoggedIn({"verify", "-i", "signature.bin", "--signature", "data.bin"}), 6,
                  "cannot verify");
}

TEST_F(ObjectCommandTest, SignatureByOpensslVerifiesAndAChangedByteDoesNot) {
    std::string signature = readTokenFile("by-openssl.bin");
    writeFile("signature.bin", signature);
    EXPECT_EQ(
        0, zrkeyLoggedIn({"verify", "--signature", "signature.bin"}, "signed by openssl").exitCode);
    signature[100] = static_cast<char>(signature[100] ^ 1);
    writeFile("signature.bin", signature);
    expectFailure(zrkeyLoggedIn({"verify", "--signature", "signature.bin"}, "signed by openssl"), 6,
                  "cannot verify");
}

TEST_F(ObjectCommandTest, SignAndVerifyWithoutALoginFail) {
    expectFailure(zrkey({"sign"}, "data"), 7, "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005)");
    writeFile("signature.bin", readTokenFile("by-openssl.bin"));
    expectFailure(zrkey({"verify", "--signature", "signature.bin"}, "data"), 7,
                  "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005)");
}

TEST_F(ObjectCommandTest, SignatureInJsonIsBase64) {
    const CommandResult result = zrkeyLoggedIn({"sign", "--json"}, "data");
    EXPECT_EQ(0, result.exitCode);
    const std::size_t begin = result.output.find("\"signature\":\"");
    ASSERT_NE(std::string::npos, begin) << result.output;
    // 256 bytes, padded.
    EXPECT_EQ(begin + 13 + 342, result.output.find("==\",", begin)) << result.output;
    expectFailure(zrkeyLoggedIn({"sign", "--json", "-o", "signature.bin"}, "data"), 2, "--json");
}

TEST_F(ObjectCommandTest, UnknownFormatOrIndexIsWrongUsage) {
    expectFailure(zrkeyLoggedIn({"sign", "--format", "der"}), 2, "raw, hex, base64 or pem");
    for (const char* index : {"a", "-1", "+1", "", " 0", "0 ", "010", "0x0", "0b1", "1e0",
                              "2147483648", "4294967296", "99999999999999999999"}) {
        expectFailure(zrkey({"info", std::string("--index=") + index}), 2, "--index");
        expectFailure(zrkey({"cert", "read", std::string("--cert-index=") + index}), 2,
                      "--cert-index");
    }
}

TEST_F(ObjectCommandTest, MissingInputIsAFailure) {
    expectFailure(zrkeyLoggedIn({"sign", "-i", "nowhere"}), 1, "cannot read \"nowhere\"");
}

TEST_F(ObjectCommandTest, TwoReadsOfStandardInputAreRefused) {
    expectFailure(zrkey({"sign", "--pin", "-"}, "1234\n"), 2, "standard input twice");
    expectFailure(zrkeyLoggedIn({"verify", "--signature", "-"}), 2, "standard input twice");
}

TEST_F(ObjectCommandTest, DigestIsMd5InHex) {
    // The test value of RFC 1321.
    expectOutput(zrkey({"digest"}, "abc"), "900150983cd24fb0d6963f7d28e17f72\n");
    expectOutput(zrkey({"digest", "--method", "MD5", "--format", "base64"}, "abc"),
                 "kAFQmDzST7DWlj99KOF/cg==\n");
    // The test value of FIPS 180.
    expectOutput(zrkey({"digest", "--method", "sha1"}, "abc"),
                 "a9993e364706816aba3e25717850c26c9cd0d89d\n");
}

}  // namespace
}  // namespace zr::test
