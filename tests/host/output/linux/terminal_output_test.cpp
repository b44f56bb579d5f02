// Colours, progress and raw bytes on a terminal. On Linux only, where a test can create a terminal.
#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <thread>

#include "tests/host/command_test.h"
#include "tests/host/crypto/samples.h"
#include "tests/host/redirection.h"

namespace zr::test {
namespace {

/// Standard output and error lead to a terminal that shows what is written as it is.
class Terminal {
public:
    Terminal() {
        termios mode = {};
        cfmakeraw(&mode);
        int terminal = -1;
        if (openpty(&m_shown, &terminal, nullptr, &mode, nullptr) == 0) {
            m_output.emplace(host::kStandardOutput, host::duplicateDescriptor(terminal));
            m_error.emplace(host::kStandardError, terminal);
            fcntl(m_shown, F_SETFL, O_NONBLOCK);
        }
    }
    ~Terminal() { close(m_shown); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool exists() const { return m_output.has_value(); }
    /// What is shown since the last call.
    std::string takeShown() const {
        std::string shown;
        char bytes[4096];
        for (ssize_t count = 0; (count = read(m_shown, bytes, sizeof bytes)) > 0;) {
            shown.append(bytes, static_cast<std::size_t>(count));
        }
        return shown;
    }

private:
    int m_shown = -1;
    std::optional<Redirection> m_output;
    std::optional<Redirection> m_error;
};

class TerminalOutputTest : public CommandTest {
protected:
    void SetUp() override {
        if (!terminal.exists()) {
            GTEST_SKIP() << "no pseudo-terminals here";
        }
        setEnvironment("TERM", "xterm");
        setEnvironment("NO_COLOR", "");
        writeFile("data.bin", "data");
    }
    std::string shownBy(const std::vector<std::string>& words, int exitCode) const {
        EXPECT_EQ(exitCode, host::runCommandLine(words));
        return terminal.takeShown();
    }
    /// Runs digest on data that takes longer than a second, also when the digest starts late.
    std::string shownByLongDigest(const std::vector<std::string>& options) const {
        int ends[2] = {};
        EXPECT_EQ(0, pipe(ends));
        const Redirection input(host::kStandardInput, ends[0]);
        std::thread writer([&ends] {
            host::writeAll(ends[1], "a");
            std::this_thread::sleep_for(std::chrono::milliseconds(2500));
            host::writeAll(ends[1], "bc");
            close(ends[1]);
        });
        std::vector<std::string> words = {"digest"};
        words.insert(words.end(), options.begin(), options.end());
        const std::string shown = shownBy(words, 0);
        writer.join();
        return shown;
    }

    Terminal terminal;
};

constexpr const char* kRedName = "\x1b[31mzrkey:\x1b[0m ";

TEST_F(TerminalOutputTest, NameOfTheCommandInAFailureIsRed) {
    EXPECT_TRUE(shownBy({"digest", "-i", "missing.bin"}, 1).starts_with(kRedName));
    EXPECT_TRUE(shownBy({"digset"}, 2).starts_with(kRedName));
    EXPECT_TRUE(shownBy({"run", "missing.js"}, 1).starts_with(kRedName));
}

TEST_F(TerminalOutputTest, WithoutColoursNothingIsRed) {
    setEnvironment("NO_COLOR", "1");
    EXPECT_TRUE(shownBy({"digest", "-i", "missing.bin"}, 1).starts_with("zrkey: "));
    EXPECT_TRUE(shownBy({"digset"}, 2).starts_with("zrkey: "));
    setEnvironment("NO_COLOR", "");
    for (const char* kind : {"dumb", ""}) {
        setEnvironment("TERM", kind);
        EXPECT_TRUE(shownBy({"digest", "-i", "missing.bin"}, 1).starts_with("zrkey: ")) << kind;
    }
}

TEST_F(TerminalOutputTest, RawBytesAreRefusedBeforeTheTokenWorks) {
    const std::string refusal = std::string(kRedName) +
                                "cannot write raw bytes to a terminal: they are not text; give -o "
                                "FILE, or --format hex, base64 or pem\n";
    EXPECT_EQ(refusal, shownBy(withPin({"sign", "-i", "data.bin"}), 2));
    EXPECT_EQ(refusal, shownBy({"cert", "read"}, 2));
    EXPECT_EQ(refusal, shownBy({"file", "read", "8"}, 2));
    EXPECT_EQ(refusal, shownBy({"digest", "-i", "data.bin", "--format", "raw"}, 2));
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(TerminalOutputTest, TextIsWrittenToATerminal) {
    module.addCertificate("one", "abc");
    EXPECT_EQ("616263\n", shownBy({"cert", "read", "--format", "hex"}, 0));
    EXPECT_NE(std::string::npos, shownBy({"cert", "read", "--json"}, 0).find("\"YWJj\""));
    EXPECT_EQ("", shownBy({"cert", "read", "-o", "certificate.der"}, 0));
}

TEST_F(TerminalOutputTest, CertificateAsTextIsWrittenToATerminal) {
    module.addCertificate("one", sample(kRsaCertificate));
    EXPECT_TRUE(shownBy({"cert", "read", "--format", "text"}, 0).starts_with("subject:\tC=DE"));
}

TEST_F(TerminalOutputTest, ExpiryInThePastIsRed) {
    module.addCertificate("one", sample(kExpiredCertificate));
    const std::string expiry = "expired 2021-01-01";
    EXPECT_NE(std::string::npos,
              shownBy({"cert", "list"}, 0).find("\t\x1b[31m" + expiry + "\x1b[0m\t"));
    setEnvironment("NO_COLOR", "1");
    EXPECT_NE(std::string::npos, shownBy({"cert", "list"}, 0).find("\t" + expiry + "\t"));
}

TEST_F(TerminalOutputTest, SignRecommendsAnotherAlgorithm) {
    const std::string signature = sample(kRsaSha1);
    module.addCertificate("one", sample(kRsaCertificate));
    module.addKey(CKO_PRIVATE_KEY, "one");
    module->settings().signature = reinterpret_cast<const CK_BYTE*>(signature.data());
    module->settings().signatureLength = signature.size();
    writeFile("data.bin", "abc");
    const std::vector<std::string> sign = withPin({"sign", "-i", "data.bin", "-o", "data.sig"});
    EXPECT_EQ("zrkey: signed with SHA-1; for new uses choose another --algorithm\n",
              shownBy(sign, 0));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--quiet"}, {"--algorithm", "rsa-sha1"}}) {
        std::vector<std::string> words = sign;
        words.insert(words.end(), options.begin(), options.end());
        EXPECT_EQ("", shownBy(words, 0));
    }
    module->settings().signature = nullptr;
}

TEST_F(TerminalOutputTest, LongWorkShowsItsProgressAndErasesIt) {
    EXPECT_EQ("\rdigest: 0 MiB\r             \r900150983cd24fb0d6963f7d28e17f72\n",
              shownByLongDigest({}));
}

TEST_F(TerminalOutputTest, ProgressIsNotShownOnRequest) {
    EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72\n", shownByLongDigest({"--quiet"}));
    EXPECT_TRUE(shownByLongDigest({"--json"}).starts_with("{\"schema\":1"));
}

}  // namespace
}  // namespace zr::test
