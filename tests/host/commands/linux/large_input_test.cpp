// Input without an end, and more input than memory should take. On Linux only, which has /dev/zero
// and counts the memory that a process used at most.
#include <sys/resource.h>

#include <cstdlib>
#include <fstream>

#include "host/commands/byte_arrays.h"
#include "host/output/failure.h"
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

constexpr CK_MECHANISM_TYPE kRsa = 0x1;
constexpr CK_MECHANISM_TYPE kSha256Rsa = 0x40;

long peakKibibytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class LargeInputTest : public CommandTest {};

TEST_F(LargeInputTest, EndlessInputIsRefusedWhenItPassesTheLimit) {
    try {
        host::readInput("/dev/zero", 100000);
        FAIL() << "all of it was read";
    } catch (const host::Failure& failure) {
        EXPECT_EQ(
            "zrkey: cannot use \"/dev/zero\": it has more than 100000 bytes; give at most "
            "100000 bytes\n",
            failure.line());
        EXPECT_EQ(host::kExitFailure, failure.exitCode);
    }
}

TEST_F(LargeInputTest, EndlessSignatureIsRefused) {
    writeFile("data.bin", "data");
    expectFailure(withPin({"verify", "-i", "data.bin", "--signature", "/dev/zero"}), 1,
                  "use \"/dev/zero\": it has more than 1048576 bytes; give at most 1048576 bytes");
}

TEST_F(LargeInputTest, DigestOf1GiBNeedsLittleMemory) {
    writeFile("large.bin", "");
    std::filesystem::resize_file("large.bin", std::uintmax_t{1} << 30);
    const long before = peakKibibytes();
    // As md5sum computes it.
    expectOutput({"digest", "-i", "large.bin"}, "cd573cfaace07e7949bc0c46028904ff\n");
    EXPECT_GT(before + 64 * 1024, peakKibibytes());
}

/// A token with an RSA key that openssl made, and 256 MiB of data that openssl signed with it.
class LargeSignatureTest : public CertificateCommandTest {
protected:
    static constexpr std::uintmax_t kSize = std::uintmax_t{256} << 20;

    LargeSignatureTest() {
        run("openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=large -days 2 -keyout key.pem "
            "-outform der -out certificate.der 2> openssl.txt");
        writeFile("large.bin", "");
        std::filesystem::resize_file("large.bin", kSize);
        run("openssl dgst -sha256 -sign key.pem -out good.sig large.bin");
        addCertificate("one", host::toBase64(readFile("certificate.der")).c_str());
        setSignature(readFile("good.sig"));
        s_received = 0;
    }

    static void run(const char* line) { EXPECT_EQ(0, std::system(line)) << line; }

    /// Expects an output, and that the memory of the process grows little.
    static void expectLittleMemory(const std::vector<std::string>& words,
                                   const std::string& output) {
        const long before = peakKibibytes();
        expectOutput(words, output);
        EXPECT_GT(before + 64 * 1024, peakKibibytes());
    }
    static std::vector<std::string> sign() {
        return withPin({"sign", "-i", "large.bin", "--algorithm", "rsa-sha256", "-o", "made.sig"});
    }

    /// The module keeps all it gets in its record; from its next C_SignInit on it only counts it.
    void countPieces() { module->callBack("C_SignInit", &replaceUpdate, nullptr); }

    static inline std::uintmax_t s_received = 0;

private:
    static void replaceUpdate(void*) {
        using GetList = CK_RV (*)(CK_FUNCTION_LIST**);
        const HMODULE library = LoadLibraryA(Recording::file().c_str());
        const auto getList = reinterpret_cast<GetList>(
            reinterpret_cast<void*>(GetProcAddress(library, "C_GetFunctionList")));
        CK_FUNCTION_LIST* list = nullptr;
        getList(&list);
        list->functions.C_SignUpdate = [](CK_SESSION_HANDLE, CK_BYTE*, CK_ULONG length) -> CK_RV {
            s_received += length;
            return CKR_OK;
        };
        FreeLibrary(library);
    }
};

TEST_F(LargeSignatureTest, SigningNeedsLittleMemoryWhereTheTokenHashes) {
    setMechanisms({kSha256Rsa});
    countPieces();
    expectLittleMemory(sign(), "");
    EXPECT_EQ(kSize, s_received);
    EXPECT_EQ(readFile("good.sig"), readFile("made.sig"));
}

TEST_F(LargeSignatureTest, SigningNeedsLittleMemoryWhereTheCommandHashes) {
    setMechanisms({kRsa});
    expectLittleMemory(sign(), "");
    EXPECT_EQ(1u, module.count("C_Sign"));
    EXPECT_EQ(readFile("good.sig"), readFile("made.sig"));
}

TEST_F(LargeSignatureTest, VerificationNeedsLittleMemory) {
    const std::vector<std::string> words = {"verify",   "-i",          "large.bin", "--signature",
                                            "good.sig", "--algorithm", "rsa-sha256"};
    expectLittleMemory(words, "verified by the key in the certificate \"one\"\n");
    // One byte behind the first 128 MiB.
    std::fstream stream("large.bin", std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(kSize / 2).put('x');
    stream.close();
    EXPECT_EQ(6, zrkey(words).exitCode);
}

}  // namespace
}  // namespace zr::test
