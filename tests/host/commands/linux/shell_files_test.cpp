// The shell completion and the manual page, read by the programs that they are for. On Linux only,
// where scripts/setup installs those programs; a test fails without its program.
#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class ShellFilesTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        setEnvironment("ZRKEY", ZRKEY_COMMAND);
    }
    void TearDown() override {
        setEnvironment("ZRKEY", "");
        ChildCommandTest::TearDown();
    }

    /// Expects a program to read the file of a kind without an error or a warning.
    /// @param broken  a line in which the program finds an error.
    static void expectChecked(const std::string& kind, const std::string& program,
                              const std::string& broken) {
        const CommandResult made = zrkey({"--generate", kind});
        ASSERT_EQ(0, made.exitCode);
        ASSERT_LT(1000u, made.output.size());
        writeFile("file", made.output);
        expectSilence(shell(program + " file"));
        writeFile("file", made.output + broken + "\n");
        EXPECT_NE("", shell(program + " file").errors);
    }
    static void expectSilence(const CommandResult& result) {
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.output);
        EXPECT_EQ("", result.errors);
    }
    /// What fish offers for a line, without the descriptions.
    static std::string offeredByFish(const std::string& line) {
        writeFile("line.fish", "\"$ZRKEY\" --generate fish | source\ncomplete -C '" + line + "'\n");
        const CommandResult result = shell("HOME=. fish --no-config line.fish | cut -f1 | xargs");
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.errors);
        return result.output;
    }
};

TEST_F(ShellFilesTest, BashReadsItsCompletion) {
    expectChecked("bash", "bash -n", "if");
}

TEST_F(ShellFilesTest, ZshReadsItsCompletion) {
    expectChecked("zsh", "zsh -f -n", "if");
}

TEST_F(ShellFilesTest, FishReadsItsCompletion) {
    expectChecked("fish", "HOME=. fish --no-execute", ")");
}

TEST_F(ShellFilesTest, FormatterReadsTheManualPage) {
    expectChecked("man", "groff -ww -man -z", ".undefined");
}

TEST_F(ShellFilesTest, FishOffersCommandsAndSwitches) {
    EXPECT_EQ("list login\n", offeredByFish("zrkey l"));
    EXPECT_EQ("exists\n", offeredByFish("zrkey file e"));
    EXPECT_EQ("--index --input\n", offeredByFish("zrkey sign --in"));
}

}  // namespace
}  // namespace zr::test
