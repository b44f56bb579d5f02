// Scripts that write to a pipe that nobody reads. On Linux the shell makes the pipe;
// tests/host/script/windows makes one of Windows.
#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class FullPipeTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        setEnvironment("ZRKEY", ZRKEY_COMMAND);
    }
    void TearDown() override {
        setEnvironment("ZRKEY", "");
        ChildCommandTest::TearDown();
    }

    /// @param redirection  of the command; descriptor 3 is the pipe.
    static CommandResult run(const std::string& text, const std::string& redirection,
                             const std::string& option = {}) {
        writeFile("script.js", text);
        return shell("(mkfifo pipe && exec 3<>pipe && timeout 30 \"$ZRKEY\" run " + option +
                     " --time-limit 0.3 script.js " + redirection + ")");
    }
};

constexpr const char* kPrint = "for (;;) { print('a line of a script that never ends'); }";
constexpr const char* kTimeUp = "script.js: RangeError: execution timeout\n";

TEST_F(FullPipeTest, BlockedPrintIsEnded) {
    const CommandResult result = run(kPrint, ">&3");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(kTimeUp, result.errors);
}

TEST_F(FullPipeTest, BlockedPrintIsEndedWhenTheReportIsBlockedToo) {
    EXPECT_EQ(1, run(kPrint, ">&3 2>&3").exitCode);
}

TEST_F(FullPipeTest, BlockedDiagnosticsAreEnded) {
    EXPECT_EQ(1, run("for (;;) { new TokenProvider().Unload(); }", "2>&3", "-v").exitCode);
}

TEST_F(FullPipeTest, BlockedPrintErrorIsEnded) {
    EXPECT_EQ(
        1, run("for (;;) { printError('a line of a script that never ends'); }", "2>&3").exitCode);
}

TEST_F(FullPipeTest, BlockedReadLineIsEnded) {
    const CommandResult result = run("print('before'); readLine();", "<&3");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("before\n", result.output);
    EXPECT_EQ(kTimeUp, result.errors);
}

TEST_F(FullPipeTest, BlockedReadOfAFileIsEnded) {
    const CommandResult result = run("readFile('pipe');", "");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(kTimeUp, result.errors);
}

TEST_F(FullPipeTest, BlockedReportOfAnErrorIsEnded) {
    const std::string fill = "new Array(1 << 16).join('x')";
    EXPECT_EQ(1, run("throw new Error(" + fill + " + " + fill + ");", "2>&3").exitCode);
}

}  // namespace
}  // namespace zr::test
