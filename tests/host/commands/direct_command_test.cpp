// zrkey beside the object model on a real token: signatures that openssl checks afterwards, contents
// that pkcs11-tool reads, a new user PIN. tests/host/around-direct prepares and checks.
#include <sstream>

#include "tests/host/command_token_test.h"

namespace zr::test {
namespace {

class DirectCommandTest : public CommandTokenTest {
protected:
    /// Where around-direct looks for a signature.
    static std::string signatureFile(const std::string& name) {
        return fromEnvironment("ZRKEY_SIGNATURES") + "/" + name;
    }
    static void signAndVerify(const std::string& certificate, const std::string& algorithm,
                              const std::string& name) {
        SCOPED_TRACE(name);
        const std::string file = signatureFile(name);
        const std::string data = tokenFile("signed.bin");
        expectOutput(zrkeyLoggedIn({"sign", "--cert", certificate, "--algorithm", algorithm, "-i",
                                    data, "-o", file}),
                     "");
        const std::vector<std::string> verify = {
            "verify", "--cert", certificate, "--algorithm", algorithm, "--signature", file};
        std::vector<std::string> words = verify;
        words.insert(words.end(), {"-i", data});
        // The library's own algorithm needs a login.
        EXPECT_EQ(0, zrkeyLoggedIn(words).exitCode);
        EXPECT_EQ(6, zrkeyLoggedIn(verify, "other data").exitCode);
    }
};

TEST_F(DirectCommandTest, RsaSignaturesAreWrittenForOpenssl) {
    for (const char* algorithm :
         {"rsa-sha1", "rsa-sha256", "rsa-sha384", "rsa-sha512", "rsa-pss-sha256"}) {
        signAndVerify("container1", algorithm, algorithm);
    }
}

TEST_F(DirectCommandTest, EcdsaSignaturesAreWrittenForOpenssl) {
    std::istringstream curves(fromEnvironment("ZRKEY_CURVES"));
    int count = 0;
    for (std::string curve; curves >> curve; ++count) {
        for (const char* algorithm : {"ecdsa-sha256", "ecdsa-sha384"}) {
            signAndVerify(curve, algorithm, std::string(algorithm) + "." + curve);
        }
    }
    EXPECT_GE(count, 2);
}

TEST_F(DirectCommandTest, CertificateWithABinaryIdSignsLikeOthers) {
    // Its ID begins with a zero byte: the library sees no name.
    signAndVerify("id:0001ff", "rsa-sha1", "rsa-sha1.binary");
    signAndVerify("id:0001ff", "rsa-sha256", "rsa-sha256.binary");
}

TEST_F(DirectCommandTest, RawEcdsaSignatureIsRAndS) {
    writeFile("data.bin", "data");
    const std::vector<std::string> options = {"--cert",   "P-256",       "--raw",       "-i",
                                              "data.bin", "--algorithm", "ecdsa-sha256"};
    std::vector<std::string> words = {"sign", "-o", "raw.sig"};
    words.insert(words.end(), options.begin(), options.end());
    expectOutput(zrkeyLoggedIn(words), "");
    EXPECT_EQ(64u, readFile("raw.sig").size());
    words = {"verify", "--signature", "raw.sig"};
    words.insert(words.end(), options.begin(), options.end());
    expectOutput(zrkey(words), "verified by the key in the certificate \"p256\"\n");
}

TEST_F(DirectCommandTest, WrittenFileIsReadBack) {
    const std::string content("\0\r\n\x1a\xff", 5);
    EXPECT_EQ(0, zrkeyLoggedIn({"file", "create", "40"}).exitCode);
    expectOutput(zrkeyLoggedIn({"file", "write", "41"}, content), "wrote 5 bytes to 41\n");
    expectOutput(zrkeyLoggedIn({"file", "read", "41"}), content);
    // pkcs11-tool reads it again afterwards.
    expectOutput(zrkeyLoggedIn({"file", "write", "51", "-i", tokenFile("signed.bin")}),
                 "wrote 200000 bytes to 51, a new file\n");
    expectOutput(zrkeyLoggedIn({"file", "delete", "41"}), "deleted 41\n");
    const CommandResult list = zrkeyLoggedIn({"file", "list"});
    EXPECT_EQ("51\t200000\tprivate\n", list.output);
    expectOutput(zrkeyLoggedIn({"file", "write", "51"}, "short"), "wrote 5 bytes to 51\n");
    expectOutput(zrkey({"file", "list"}), "");
}

TEST_F(DirectCommandTest, UserGetsANewPin) {
    setEnvironment("TEST_NEW_PIN", "new-pin");
    const std::vector<std::string> unblock = {"pin", "unblock", "--pin", "env:TEST_SO_PIN",
                                              "--new-pin"};
    std::vector<std::string> words = unblock;
    words.emplace_back("env:TEST_NEW_PIN");
    expectOutput(zrkey(words), "unblocked the user PIN of \"ZRKey Test\"\n");
    EXPECT_EQ(0, zrkey({"login", "--pin", "env:TEST_NEW_PIN"}).exitCode);
    EXPECT_EQ(5, zrkeyLoggedIn({"login"}).exitCode);
    words = unblock;
    words.emplace_back("env:TEST_PIN");
    EXPECT_EQ(0, zrkey(words).exitCode);
    EXPECT_EQ(0, zrkeyLoggedIn({"login"}).exitCode);
}

}  // namespace
}  // namespace zr::test
