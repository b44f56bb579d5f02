// The prompt of zrkey on a terminal of its own, which must not show what is typed. On Linux only,
// where a test can create a terminal.
#include "tests/host/linux/terminal_command.h"

namespace zr::test {
namespace {

using PromptTest = TerminalTest;

TEST_F(PromptTest, LoginPromptsAndHidesTheAnswer) {
    TerminalCommand command({"login"});
    command.waitFor("user PIN of \"ZRKey Test\" (4 to 127 characters): ");
    EXPECT_FALSE(command.isEchoOn());
    command.type("1234\n");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_NE(std::string::npos, shown.find("logged in to \"ZRKey Test\" as user")) << shown;
    EXPECT_EQ(std::string::npos, shown.find("1234")) << shown;
}

TEST_F(PromptTest, PinChangeWithTwoDifferentNewPinsIsRefused) {
    TerminalCommand command({"pin", "change"});
    command.waitFor("user PIN of \"ZRKey Test\" (4 to 8 characters): ");
    command.type("1234\n");
    command.waitFor("new PIN (4 to 8 characters): ");
    command.type("5678\n");
    command.waitFor("new PIN again: ");
    command.type("5679\n");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_EQ(2, WEXITSTATUS(status));
    EXPECT_NE(std::string::npos, shown.find("the two new PINs differ")) << shown;
    EXPECT_EQ(std::string::npos, shown.find("567")) << shown;
}

TEST_F(PromptTest, PinChangeSaysWhatToDoWithALongOldPin) {
    TerminalCommand command({"pin", "change"});
    command.waitFor("user PIN of \"ZRKey Test\" (4 to 8 characters): ");
    command.type("123456789\n");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_EQ(2, WEXITSTATUS(status));
    EXPECT_NE(
        std::string::npos,
        shown.find("the old PIN is longer than 8 bytes, which the object model does not accept"))
        << shown;
}

TEST_F(PromptTest, InterruptAtThePromptEndsTheCommandAndRestoresTheEcho) {
    TerminalCommand command({"login"});
    command.waitFor("user PIN of \"ZRKey Test\" (4 to 127 characters): ");
    command.type("\x03");
    command.waitFor("\r\n");
    int status = 0;
    command.finish(&status);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(SIGINT, WTERMSIG(status));
    EXPECT_TRUE(command.isEchoOn());
}

TEST_F(PromptTest, InterruptAtThePromptUnloadsTheModule) {
    setEnvironment("ZRKEY_MODULE", ZR_INSTANT_MODULE);
    setEnvironment("ZRKEY_INSTANT_LOG", std::filesystem::absolute("calls.txt").string());
    TerminalCommand command({"login"});
    command.waitFor("user PIN of \"Instant\": ");
    command.type("\x03");
    int status = 0;
    EXPECT_EQ("user PIN of \"Instant\": \r\n", command.finish(&status));
    setEnvironment("ZRKEY_INSTANT_LOG", "");
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(SIGINT, WTERMSIG(status));
    EXPECT_EQ("C_CloseSession\nC_Finalize\n", readFile("calls.txt"));
}

TEST_F(PromptTest, SignalIgnoredByTheCallerDoesNotEndThePrompt) {
    const auto before = signal(SIGHUP, SIG_IGN);
    TerminalCommand command({"login"});
    signal(SIGHUP, before);
    command.waitFor("user PIN of \"ZRKey Test\" (4 to 127 characters): ");
    command.send(SIGHUP);
    // An answer typed at once would end the prompt before the signal could.
    EXPECT_TRUE(command.showsNothingFor(500));
    command.type("1234\n");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_NE(std::string::npos, shown.find("logged in to \"ZRKey Test\" as user")) << shown;
    EXPECT_EQ(0, WEXITSTATUS(status));
}

TEST_F(PromptTest, EmptyAnswerIsRefusedWithoutARetry) {
    TerminalCommand command({"login"});
    command.waitFor("user PIN of \"ZRKey Test\" (4 to 127 characters): ");
    command.type("\n");
    int status = 0;
    EXPECT_NE(std::string::npos, command.finish(&status).find("the PIN is empty"));
    EXPECT_EQ(2, WEXITSTATUS(status));
}

TEST_F(PromptTest, ScriptPromptsAndHidesTheAnswer) {
    TerminalCommand command({"run", "-e", "print(readPin('the\\u001b PIN: ').length, readPin())"});
    command.waitFor("the? PIN: ");
    EXPECT_FALSE(command.isEchoOn());
    command.type("98765\n");
    command.waitFor("PIN: ");
    command.type("secret\n");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_EQ(std::string::npos, shown.find("98765")) << shown;
    EXPECT_NE(std::string::npos, shown.find("5 secret\r\n")) << shown;
    EXPECT_TRUE(command.isEchoOn());
}

TEST_F(PromptTest, PinOfTheCommandLineAnswersTheScriptOnce) {
    setEnvironment("TEST_PIN", "1234");
    TerminalCommand command(
        {"run", "--pin", "env:TEST_PIN", "-e",
         "print('first', readPin('one: ')); print('second', readPin('two: '))"});
    command.waitFor("first 1234\r\ntwo: ");
    command.type("5678\n");
    int status = 0;
    EXPECT_NE(std::string::npos, command.finish(&status).find("second 5678\r\n"));
    EXPECT_EQ(0, WEXITSTATUS(status));
}

TEST_F(PromptTest, ScriptThatIsOutOfTimeAtThePromptRestoresTheEcho) {
    TerminalCommand command({"run", "--time-limit", "0.3", "-e", "readPin('PIN: ')"});
    command.waitFor("PIN: ");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_EQ(1, WEXITSTATUS(status));
    EXPECT_NE(std::string::npos, shown.find("command line: RangeError: execution timeout"))
        << shown;
    EXPECT_TRUE(command.isEchoOn());
}

TEST_F(PromptTest, EmptyAnswerIsAnErrorOfTheScript) {
    TerminalCommand command(
        {"run", "-e", "try { readPin('PIN: ') } catch (error) { print(error.message) }"});
    command.waitFor("PIN: ");
    command.type("\n");
    int status = 0;
    EXPECT_NE(std::string::npos,
              command.finish(&status).find("readPin failed: the PIN is empty\r\n"));
}

class LastTryTest : public PromptTest {
protected:
    void SetUp() override {
        PromptTest::SetUp();
        setEnvironment("ZRKEY_MODULE", ZR_INSTANT_MODULE);
        setEnvironment("ZRKEY_INSTANT_FLAGS", "0x20000");
    }
    void TearDown() override {
        setEnvironment("ZRKEY_INSTANT_FLAGS", "");
        PromptTest::TearDown();
    }

    static constexpr const char* kQuestion =
        "One try is left for the user PIN of \"Instant\"; a wrong PIN locks it. Use it (yes/no)? ";
};

TEST_F(LastTryTest, YesUsesTheLastTry) {
    TerminalCommand command({"login"});
    command.waitFor(kQuestion);
    EXPECT_TRUE(command.isEchoOn());
    command.type("yes\n");
    command.waitFor("user PIN of \"Instant\": ");
    command.type("1234\n");
    int status = 0;
    const std::string shown = command.finish(&status);
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_NE(std::string::npos, shown.find("yes\r\n")) << shown;
    EXPECT_NE(std::string::npos, shown.find("logged in to \"Instant\" as user")) << shown;
}

TEST_F(LastTryTest, AnyOtherAnswerLeavesTheLastTry) {
    for (const char* answer : {"no\n", "\n", "yes, of course I am sure\n"}) {
        TerminalCommand command({"login", "--pin", "env:TEST_PIN"});
        command.waitFor(kQuestion);
        command.type(answer);
        int status = 0;
        const std::string shown = command.finish(&status);
        EXPECT_EQ(2, WEXITSTATUS(status));
        EXPECT_NE(std::string::npos, shown.find("the answer was not yes")) << shown;
    }
}

}  // namespace
}  // namespace zr::test
