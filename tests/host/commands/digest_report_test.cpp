// The reports of digest, which needs no module.
#include <algorithm>

#include "host/commands/byte_arrays.h"
#include "host/crypto/hash.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class DigestReportTest : public CommandTest {
protected:
    DigestReportTest() {
        setEnvironment("ZRKEY_MODULE", "");
        writeFile("data.bin", "data");
    }
};

TEST_F(DigestReportTest, DigestIsWrittenInEachFormat) {
    // The digest of "data" as md5sum computes it.
    expectOutput({"digest", "-i", "data.bin"}, "8d777f385d3dfec8815d20f7496026dc\n");
    expectOutput({"digest", "-i", "data.bin", "--format", "pem"},
                 "-----BEGIN DIGEST-----\njXd/OF09/siBXSD3SWAm3A==\n-----END DIGEST-----\n");
    expectJson({"digest", "-i", "data.bin"}, "digest",
               R"("digest":"jXd/OF09/siBXSD3SWAm3A==","method":"MD5")");
    expectOutput({"digest", "-i", "data.bin", "-o", "digest.txt"}, "");
    EXPECT_EQ("8d777f385d3dfec8815d20f7496026dc\n", readFile("digest.txt"));
}

TEST_F(DigestReportTest, EveryMethodIsKnownInUpperAndLowerCase) {
    // As sha1sum computes it.
    expectOutput({"digest", "-i", "data.bin", "--method", "sha1"},
                 "a17c9aaa61e80a1bf71d0d850af4e5baa9800bbd\n");
    expectJson({"digest", "-i", "data.bin", "--method", "Sha1"}, "digest",
               R"("digest":"oXyaqmHoChv3HQ2FCvTluqmAC70=","method":"SHA1")");
    for (const char* method : {"MD5", "SHA256", "SHA384", "SHA512"}) {
        const std::string digest = hashOf(host::hashNamed(method).value(), "data");
        expectOutput({"digest", "-i", "data.bin", "--method", method}, host::toHex(digest) + "\n");
    }
}

TEST_F(DigestReportTest, OtherMethodsAreWrongUsage) {
    expectUsageError({"digest", "--method", "MD4"},
                     "--method: the method must be MD5, SHA1, SHA256, SHA384 or SHA512",
                     "digest [OPTIONS]");
}

TEST_F(DigestReportTest, OptionsOfModulesAndTokensAreWrongUsage) {
    for (const char* option : {"--module", "--label", "--config"}) {
        expectUsageError({"digest", option, "x", "-i", "data.bin"},
                         std::string("unknown option ") + option, "digest [OPTIONS]");
    }
    EXPECT_EQ(2, zrkey({"--module", module.path(), "digest", "-i", "data.bin"}).exitCode);
}

TEST_F(DigestReportTest, NoModuleIsLoaded) {
    setEnvironment("ZRKEY_MODULE", module.path());
    EXPECT_EQ(0, zrkey({"digest", "-i", "data.bin"}).exitCode);
    setEnvironment("ZRKEY_MODULE", "no module");
    EXPECT_EQ(0, zrkey({"digest", "-i", "data.bin"}).exitCode);
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(DigestReportTest, UnreadableInputAndUnwritableOutputShowTheSystemsError) {
    expectFailure({"digest", "-i", "missing.bin"}, 1,
                  "read \"missing.bin\": No such file or directory; check the path and its "
                  "permissions");
    EXPECT_EQ(1, zrkey({"digest", "-i", "."}).exitCode);
    expectFailure({"digest", "-i", "data.bin", "-o", "missing/digest.txt"}, 1,
                  "write to \"missing/digest.txt\": No such file or directory; nothing was done; "
                  "check the path and its permissions");
}

TEST_F(DigestReportTest, InputIsTakenInSmallPieces) {
    writeFile("large.bin", "");
    std::filesystem::resize_file("large.bin", 5'000'000);
    host::Console console(host::Diagnostics::kDropped);
    std::size_t size = 0;
    std::size_t largest = 0;
    host::readInPieces("large.bin", "digest", console, [&](std::string_view piece) {
        size += piece.size();
        largest = std::max(largest, piece.size());
    });
    EXPECT_EQ(5'000'000u, size);
    EXPECT_GE(65536u, largest);
}

}  // namespace
}  // namespace zr::test
