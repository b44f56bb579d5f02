// zrkey shell on a terminal of its own: prompts, history, completion. On Linux only, where a test
// can create a terminal.
#include "tests/host/linux/terminal_command.h"

namespace zr::test {
namespace {

class ShellTerminalTest : public TerminalTest {
protected:
    void SetUp() override {
        TerminalTest::SetUp();
        setEnvironment("TERM", "vt100");
    }

    static constexpr const char* kPrompt = "zrkey> ";
    static constexpr const char* kEndOfInput = "\x04";
    static constexpr const char* kUp = "\x1b[A";
    static constexpr const char* kTab = "\t";

    /// Ctrl-D. Not at once after the prompt: until the editor has taken the terminal, the system itself
    /// reads the key.
    static void endInput(TerminalCommand& shell) {
        shell.waitFor(kPrompt);
        EXPECT_TRUE(shell.showsNothingFor(300));
        shell.type(kEndOfInput);
    }
    static void expectEnd(TerminalCommand& shell, int exitCode = 0) {
        int status = 0;
        shell.finish(&status);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(exitCode, WEXITSTATUS(status));
        EXPECT_TRUE(shell.isEchoOn());
    }
};

TEST_F(ShellTerminalTest, StatementIsRunAndItsResultShown) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("'a' + 'b'\n");
    shell.waitFor("\"ab\"\r\n");
    shell.waitFor(kPrompt);
    shell.type("missing\n");
    shell.waitFor("shell:1: ReferenceError: identifier 'missing' undefined\r\n");
    endInput(shell);
    expectEnd(shell);
}

TEST_F(ShellTerminalTest, ExitEndsTheShell) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("exit(7)\n");
    expectEnd(shell, 7);
}

TEST_F(ShellTerminalTest, IncompleteStatementHasAnotherPrompt) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("[1,\n");
    shell.waitFor("... ");
    shell.type("2]\n");
    shell.waitFor("[1, 2]\r\n");
    endInput(shell);
    expectEnd(shell);
}

TEST_F(ShellTerminalTest, HistoryBringsALineBack) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("20 + 1\n");
    shell.waitFor("21\r\n");
    shell.waitFor(kPrompt);
    shell.type(std::string(kUp) + "0\n");
    shell.waitFor("30\r\n");
    endInput(shell);
    expectEnd(shell);
}

TEST_F(ShellTerminalTest, TabCompletesMembersOfTheToken) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    // What is completed is shown by itself, behind what is there.
    shell.type("var tok = provi");
    shell.type(kTab);
    shell.waitFor("der");
    shell.type(".Op");
    shell.type(kTab);
    shell.waitFor("enKey");
    shell.type("(0)\n");
    shell.waitFor(kPrompt);
    shell.type("tok.GetLa");
    shell.type(kTab);
    shell.waitFor("bel");
    shell.type("()\n");
    shell.waitFor("\"ZRKey Test\"\r\n");
    shell.waitFor(kPrompt);
    // Several names are listed when they share nothing more.
    shell.type("tok.Verify");
    shell.type(kTab);
    shell.waitFor("VerifyData  VerifyPIN");
    shell.waitFor("tok.Verify");
    shell.type("PIN\n");
    shell.waitFor("[function VerifyPIN]\r\n");
    endInput(shell);
    expectEnd(shell);
}

TEST_F(ShellTerminalTest, TextOutsideAsciiIsEdited) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("'\u00e4\u20ac\U0001F511x\x7f'\n");
    shell.waitFor("\"\u00e4\u20ac\U0001F511\"\r\n");
    endInput(shell);
    expectEnd(shell);
}

TEST_F(ShellTerminalTest, PinIsNeitherShownNorInTheHistory) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("pin = readPin('the' + ' PIN: ')\n");
    shell.waitFor("the PIN: ");
    EXPECT_FALSE(shell.isEchoOn());
    shell.type("87654\n");
    shell.waitFor(kPrompt);
    shell.type("pin.length\n");
    shell.waitFor("5\r\n");
    shell.waitFor(kPrompt);
    // Through all lines of the history.
    shell.type(std::string(kUp) + kUp + kUp + kUp + "\n");
    shell.waitFor("the PIN: ");
    shell.type("13579\n");
    endInput(shell);
    int status = 0;
    const std::string shown = shell.finish(&status);
    EXPECT_EQ(std::string::npos, shown.find("87654")) << shown;
    EXPECT_EQ(std::string::npos, shown.find("13579")) << shown;
}

TEST_F(ShellTerminalTest, InterruptEndsTheLineOrTheStatementAndNotTheShell) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.type("[1,\n");
    shell.waitFor("... ");
    shell.type("half a li\x03");
    shell.waitFor(kPrompt);
    shell.type("print('go'); for (;;) {}\n");
    shell.waitFor("go\r\n");
    shell.type("\x03");
    shell.waitFor("interrupted\r\n");
    shell.waitFor(kPrompt);
    shell.type("readPin('the' + ' PIN: ')\n");
    shell.waitFor("the PIN: ");
    shell.type("12\x03");
    shell.waitFor(kPrompt);
    shell.type("40 + 1\n");
    shell.waitFor("41\r\n");
    endInput(shell);
    expectEnd(shell);
}

TEST_F(ShellTerminalTest, TerminationEndsTheShellAndRestoresTheTerminal) {
    TerminalCommand shell({"shell"});
    shell.waitFor(kPrompt);
    shell.send(SIGTERM);
    int status = 0;
    shell.finish(&status);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(SIGTERM, WTERMSIG(status));
    EXPECT_TRUE(shell.isEchoOn());
}

TEST_F(ShellTerminalTest, OutputGoesToStandardOutputAndThePromptDoesNot) {
    TerminalCommand shell({"shell"}, "output.txt");
    shell.waitFor(kPrompt);
    shell.type("6 * 7\n");
    endInput(shell);
    expectEnd(shell);
    EXPECT_EQ("42\n", readFile("output.txt"));
}

}  // namespace
}  // namespace zr::test
