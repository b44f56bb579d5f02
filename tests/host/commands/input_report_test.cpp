// What sign and verify read: signatures in each format, and data that is too large. The certificate,
// its key and the signature of "abc" are those of openssl.
#include "host/commands/key_command.h"
#include "tests/host/command_test.h"
#include "tests/host/crypto/samples.h"

namespace zr::test {
namespace {

class InputReportTest : public CommandTest {
protected:
    InputReportTest() {
        module.addCertificate("one", sample(kRsaCertificate));
        module.addKey(CKO_PRIVATE_KEY, "one");
        module.addKey(CKO_PUBLIC_KEY, "one");
        module->settings().signature = reinterpret_cast<const CK_BYTE*>(signature.data());
        module->settings().signatureLength = signature.size();
        writeFile("data.bin", "abc");
        writeFile("signature.bin", signature);
    }
    ~InputReportTest() override { module->settings().signature = nullptr; }

    static void expectVerified(const std::string& file, const std::string& format) {
        expectOutput(withPin({"verify", "-i", "data.bin", "--signature", file, "--format", format}),
                     "verified by the key of \"one\"\n");
    }

    const std::string signature = sample(kRsaSha1);
};

TEST_F(InputReportTest, SignatureIsReadInEachFormatThatSignWrites) {
    for (const char* format : {"raw", "hex", "base64", "pem"}) {
        expectOutput(withPin({"sign", "-i", "data.bin", "--format", format, "-o", "written.sig"}),
                     "");
        expectVerified("written.sig", format);
    }
}

TEST_F(InputReportTest, LineEndsAndBlanksInASignatureDoNotMatter) {
    const std::string hex = host::toHex(signature);
    writeFile("written.sig", hex.substr(0, 100) + "\r\n " + hex.substr(100) + "\r\n");
    expectVerified("written.sig", "hex");
}

TEST_F(InputReportTest, SignatureOfAnotherFormatFailsBeforeTheTokenWorks) {
    for (const char* format : {"hex", "base64", "pem"}) {
        expectFailure(
            withPin(
                {"verify", "-i", "data.bin", "--signature", "signature.bin", "--format", format}),
            1,
            "read the signature in \"signature.bin\": it is not in the format that --format names; "
            "give the format in which it was written");
    }
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(InputReportTest, InputThatIsTooLargeIsRefusedBeforeItIsRead) {
    writeFile("large.bin", "");
    // A hole: it takes no space.
    std::filesystem::resize_file("large.bin", std::uintmax_t{3} << 30);
    const auto line = [](const std::string& most) {
        return "use \"large.bin\": it has 3221225472 bytes; give at most " + most + " bytes";
    };
    const std::string library = line("2147483647");
    expectFailure(withPin({"sign", "-i", "large.bin"}), 1, library);
    expectFailure(withPin({"verify", "-i", "large.bin", "--signature", "signature.bin"}), 1,
                  library);
    const std::string small = line("1048576");
    expectFailure(withPin({"verify", "-i", "data.bin", "--signature", "large.bin"}), 1, small);
    expectFailure(withPin({"file", "write", "8", "-i", "large.bin"}), 1, small);
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(InputReportTest, DataIsTakenInSmallPiecesUnlessTheLibraryTakesIt) {
    writeFile("large.bin", "");
    std::filesystem::resize_file("large.bin", 1'000'000);
    host::Console console(host::Diagnostics::kDropped);
    const auto largestPiece = [&console](host::SignatureAlgorithm algorithm) {
        std::size_t size = 0;
        std::size_t largest = 0;
        host::SignedData("large.bin", algorithm, console).forEachPiece([&](std::string_view piece) {
            size += piece.size();
            largest = std::max(largest, piece.size());
        });
        EXPECT_EQ(1'000'000u, size);
        return largest;
    };
    EXPECT_GE(65536u, largestPiece(host::SignatureAlgorithm::kRsaSha256));
    EXPECT_EQ(1'000'000u, largestPiece(host::SignatureAlgorithm::kRsaSha1));
}

}  // namespace
}  // namespace zr::test
