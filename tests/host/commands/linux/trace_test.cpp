// zrkey trace on a real token. On Linux only, where OpenSC's spy module is.
#include "host/output/trace_filter.h"
#include "tests/host/command_token_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class TraceTest : public CommandTokenTest {
protected:
    void SetUp() override {
        CommandTokenTest::SetUp();
        const char* const options = std::getenv("ASAN_OPTIONS");
        m_sanitizer = options ? options : "";
        // The spy module does not free what it allocates.
        setEnvironment("ASAN_OPTIONS", m_sanitizer + ":detect_leaks=0");
        setEnvironment("ZRKEY", ZRKEY_COMMAND);
    }
    void TearDown() override {
        setEnvironment("ASAN_OPTIONS", m_sanitizer);
        setEnvironment("ZRKEY", "");
        CommandTokenTest::TearDown();
    }

    static CommandResult trace(std::vector<std::string> words, const std::string& input = {}) {
        words.insert(words.begin(), {"trace", "--"});
        return zrkey(words, input);
    }
    /// A PIN as text, and any four of its bytes as the spy dumps them. Shorter parts could be those
    /// of a time.
    static void expectNoPin(const std::string& pin, const std::string& text) {
        constexpr std::size_t kPart = 4;
        EXPECT_EQ(std::string::npos, text.find(pin)) << text;
        for (std::size_t i = 0; i + kPart <= pin.size(); ++i) {
            std::string bytes;
            for (const char digit : pin.substr(i, kPart)) {
                bytes.append("3").append(1, digit).append(" ");
            }
            EXPECT_EQ(std::string::npos, text.find(bytes)) << text;
        }
    }
    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

private:
    std::string m_sanitizer;
};

TEST_F(TraceTest, CallsAreShownAndTheOutputIsThatOfTheCommand) {
    const CommandResult plain = zrkey({"list"});
    const CommandResult traced = trace({"list"});
    EXPECT_EQ(0, traced.exitCode);
    EXPECT_EQ(plain.output, traced.output);
    for (const char* call : {"C_Initialize", "C_GetSlotList", "C_GetTokenInfo", "C_Finalize"}) {
        EXPECT_TRUE(has(traced.errors, std::string(": ") + call + "\n")) << call;
    }
    EXPECT_TRUE(has(traced.errors, "'ZRKey Test ")) << traced.errors;
}

TEST_F(TraceTest, LoginShowsNoPin) {
    const CommandResult result = trace({"login", "--pin", "env:TEST_PIN"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("logged in to \"ZRKey Test\" as user\n", result.output);
    EXPECT_TRUE(has(result.errors, ": C_Login\n(arguments are not shown)\nReturned:  0 CKR_OK\n"))
        << result.errors;
    expectNoPin("1234", result.errors);
    EXPECT_TRUE(has(result.errors, ": C_CloseSession\n"));
}

TEST_F(TraceTest, RefusedLoginShowsNoPinAndKeepsTheExitCode) {
    const CommandResult result = trace({"login", "--pin", "-"}, "97531\n");
    EXPECT_EQ(5, result.exitCode);
    EXPECT_TRUE(has(result.errors, "CKR_PIN_INCORRECT")) << result.errors;
    EXPECT_TRUE(has(result.errors, "zrkey: cannot log in")) << result.errors;
    expectNoPin("97531", result.errors);
    // Restores the retries.
    EXPECT_EQ(0, zrkeyLoggedIn({"login"}).exitCode);
}

TEST_F(TraceTest, ChangedPinIsNotShown) {
    const CommandResult result =
        trace({"pin", "change", "--pin", "-", "--new-pin", "-"}, "1234\n86420\n");
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ(0,
              zrkey({"pin", "change", "--pin", "-", "--new-pin", "-"}, "86420\n1234\n").exitCode);
    EXPECT_TRUE(has(result.errors, ": C_SetPIN\n(arguments are not shown)\n")) << result.errors;
    expectNoPin("86420", result.errors);
    expectNoPin("1234", result.errors);
}

TEST_F(TraceTest, PinsThatOtherProgramsSetAreNotShown) {
    const std::string before = fromEnvironment("SOFTHSM2_CONF");
    fs::create_directory("tokens");
    writeFile("own.conf", "directories.tokendir = " + fs::absolute("tokens").string() + "\n");
    setEnvironment("SOFTHSM2_CONF", fs::absolute("own.conf").string());
    setEnvironment("PKCS11SPY", fromEnvironment("ZRKEY_TEST_MODULE"));
    setEnvironment("PKCS11SPY_OUTPUT", "trace.txt");
    const std::string tool = "pkcs11-tool --module \"$(ls /usr/lib/*/pkcs11/pkcs11-spy.so)\" ";
    const CommandResult token =
        shell(tool + "--init-token --slot-index 0 --so-pin 86420975 --label 'a\n1: C_Sign'");
    const CommandResult pin =
        shell(tool + "--init-pin --login --login-type so --so-pin 86420975 --new-pin 753197");
    setEnvironment("PKCS11SPY", "");
    setEnvironment("PKCS11SPY_OUTPUT", "");
    setEnvironment("SOFTHSM2_CONF", before);
    EXPECT_EQ(0, token.exitCode) << token.errors;
    EXPECT_EQ(0, pin.exitCode) << pin.errors;
    const std::string written = readFile("trace.txt");
    // Else the rest proves nothing.
    ASSERT_TRUE(has(written, "86420975")) << written;
    ASSERT_TRUE(has(written, "753197")) << written;
    host::TraceFilter filter;
    const std::string shown = filter.add(written) + filter.finish();
    EXPECT_TRUE(has(shown, ": C_InitToken\n(arguments are not shown)\n")) << shown;
    EXPECT_TRUE(has(shown, ": C_InitPIN\n(arguments are not shown)\n")) << shown;
    expectNoPin("86420975", shown);
    expectNoPin("753197", shown);
}

TEST_F(TraceTest, ModuleOfAnOptionAndOfAScriptIsTraced) {
    const std::string module = fromEnvironment("ZRKEY_TEST_MODULE");
    setEnvironment("ZRKEY_MODULE", "");
    EXPECT_TRUE(has(trace({"list", "--module", module}).errors, ": C_GetTokenInfo\n"));
    const CommandResult result =
        trace({"run", "--module", module, "-e", "print(provider.OpenKey(0).GetLabel())"});
    EXPECT_EQ("ZRKey Test\n", result.output);
    EXPECT_TRUE(has(result.errors, ": C_OpenSession\n"));
}

TEST_F(TraceTest, ModuleThatDoesNotLoadIsNamed) {
    const CommandResult result = trace({"list", "--module", "missing.so"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_TRUE(has(result.errors, "zrkey: cannot load the module \"missing.so\": No such file"))
        << result.errors;
}

TEST_F(TraceTest, SpyThatCannotWriteIntoAPipeIsNotUsed) {
    setEnvironment("ZRKEY_TRACE_SPY", "/usr/lib/x86_64-linux-gnu/pkcs11/pkcs11-spy.so");
    for (const char* output : {"", "/dev/fd/77", "trace.txt"}) {
        writeFile("trace.txt", "");
        setEnvironment("PKCS11SPY_OUTPUT", output);
        const CommandResult result = zrkeyLoggedIn({"login", "-v"});
        EXPECT_EQ(1, result.exitCode) << output;
        EXPECT_TRUE(has(result.errors, "the pipe for the trace is not usable")) << result.errors;
        expectNoPin("1234", result.errors + readFile("trace.txt"));
    }
    setEnvironment("ZRKEY_TRACE_SPY", "");
    setEnvironment("PKCS11SPY_OUTPUT", "");
}

TEST_F(TraceTest, CallerThatIgnoresChildrenGetsTheExitCode) {
    const CommandResult result =
        shell("(trap '' CHLD; exec \"$ZRKEY\" trace -- login --pin env:NO_SUCH_VARIABLE)");
    EXPECT_EQ(2, result.exitCode) << result.errors;
}

TEST_F(TraceTest, TerminationEndsTheTracedCommand) {
    shell(
        "(\"$ZRKEY\" trace -- watch >out.txt 2>trace.txt & command=$!;"
        " for try in $(seq 100); do grep -q present out.txt && break; sleep 0.1; done;"
        " kill -TERM $command; wait $command; echo $? >code.txt)");
    EXPECT_EQ("143\n", readFile("code.txt"));
    EXPECT_TRUE(has(readFile("trace.txt"), ": C_Finalize\n")) << readFile("trace.txt");
}

TEST_F(TraceTest, NothingIsLeftInFiles) {
    trace({"login", "--pin", "env:TEST_PIN"});
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
        EXPECT_FALSE(entry.is_regular_file() && has(readFile(entry.path()), "C_Login") &&
                     entry.path().filename() != "errors.txt")
            << entry.path();
    }
}

}  // namespace
}  // namespace zr::test
