// Signals sent to zrkey while its module is in a call. On Linux only, where a test can send them to
// one process; tests/host/commands/interruption_test.cpp has the rest.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

constexpr const char* kEnd = "C_Login\nC_Logout\nC_CloseSession\nC_Finalize\n";

/// zrkey with a module that logs its calls.
class SignalTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        writeFile("config.xml", "<driver/>");
        writeFile("calls.txt", "");
        setEnvironment("TEST_PIN", "1234");
        setEnvironment("ZRKEY_MODULE", ZR_INSTANT_MODULE);
        setEnvironment("ZRKEY_INSTANT_LOG", std::filesystem::absolute("calls.txt").string());
        setEnvironment("ZRKEY_INSTANT_LOGIN_TIME", "1000");
    }
    void TearDown() override {
        for (const char* name : {"ZRKEY_MODULE", "ZRKEY_INSTANT_LOG", "ZRKEY_INSTANT_LOGIN_TIME"}) {
            setEnvironment(name, "");
        }
        ChildCommandTest::TearDown();
    }

    void start(std::vector<std::string> words, int ignored = 0) {
        words.insert(words.begin(), ZRKEY_COMMAND);
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        ASSERT_EQ(0, pipe(m_input));
        m_child = fork();
        if (m_child == 0) {
            if (ignored != 0) {
                signal(ignored, SIG_IGN);
            }
            dup2(m_input[0], 0);
            close(m_input[1]);
            dup2(open("output.txt", O_WRONLY | O_CREAT, 0600), 1);
            dup2(1, 2);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(m_input[0]);
    }
    void login(int ignored = 0) {
        start({"login", "--pin", "env:TEST_PIN"}, ignored);
        awaitCalls("C_Login\n");
    }
    /// Waits until the module has been called so often.
    static void awaitCalls(const std::string& calls) {
        for (int i = 0; i < 2000 && readFile("calls.txt") != calls; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_EQ(calls, readFile("calls.txt"));
    }
    void send(int number) const { EXPECT_EQ(0, kill(m_child, number)); }
    /// @return what waitpid says.
    int finish() const {
        int status = 0;
        waitpid(m_child, &status, 0);
        close(m_input[1]);
        return status;
    }
    void expectEndBy(int number) const {
        const int status = finish();
        EXPECT_TRUE(WIFSIGNALED(status)) << readFile("output.txt");
        EXPECT_EQ(number, WTERMSIG(status));
    }

private:
    pid_t m_child = -1;
    int m_input[2] = {};
};

TEST_F(SignalTest, CommandEndsItsWorkAndThenByTheSignal) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        writeFile("calls.txt", "");
        login();
        send(number);
        expectEndBy(number);
        EXPECT_EQ(kEnd, readFile("calls.txt"));
        EXPECT_EQ("", readFile("output.txt"));
    }
}

TEST_F(SignalTest, SecondSignalEndsTheCommandAtOnce) {
    setEnvironment("ZRKEY_INSTANT_LOGIN_TIME", "60000");
    login();
    send(SIGINT);
    // Both at once would be one.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    send(SIGTERM);
    expectEndBy(SIGTERM);
    EXPECT_EQ("C_Login\n", readFile("calls.txt"));
}

TEST_F(SignalTest, SignalThatTheCallerIgnoresStaysIgnored) {
    login(SIGHUP);
    send(SIGHUP);
    EXPECT_EQ(0, finish());
    EXPECT_EQ("logged in to \"Instant\" as user\n", readFile("output.txt"));
}

TEST_F(SignalTest, ShellSeesTheConventionalCode) {
    // The shell waits for the command; the signal comes from beside it.
    const std::string line = std::string("(\"") + ZRKEY_COMMAND +
                             "\" login --pin env:TEST_PIN & sleep 0.5; kill -TERM $!; wait $!)";
    EXPECT_EQ(128 + SIGTERM, shell(line).exitCode);
    EXPECT_EQ(kEnd, readFile("calls.txt"));
}

std::string scriptWith(const std::string& more) {
    return "var provider = new TokenProvider(); provider.Load(arguments[0]);"
           " var token = provider.OpenKey(0); token.VerifyPIN('1234', 0); print('there');" +
           more;
}

TEST_F(SignalTest, ScriptThatReadsOrWritesEndsItsWorkAndThenByTheSignal) {
    setEnvironment("ZRKEY_INSTANT_LOGIN_TIME", "");
    const std::string module =
        std::filesystem::relative(std::filesystem::path(ZR_INSTANT_MODULE)).string();
    for (const char* more :
         {"readLine(); print('read');", "for (;;) { try { for (;;) ; } catch (error) { } }",
          "for (;;) { token.GetLabel(); }"}) {
        writeFile("calls.txt", "");
        writeFile("output.txt", "");
        start({"run", "-e", scriptWith(more), module});
        awaitCalls("C_Login\n");
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        send(SIGINT);
        expectEndBy(SIGINT);
        EXPECT_EQ(kEnd, readFile("calls.txt")) << more;
        EXPECT_EQ("there\n", readFile("output.txt")) << more;
    }
}

TEST_F(SignalTest, ScriptThatWritesToAFullPipeEndsItsWorkAndThenByTheSignal) {
    setEnvironment("ZRKEY_INSTANT_LOGIN_TIME", "");
    const std::string module =
        std::filesystem::relative(std::filesystem::path(ZR_INSTANT_MODULE)).string();
    writeFile("script.js", scriptWith("for (;;) { print('a line that nobody reads'); }"));
    // In a process group without job control the shell lets commands ignore SIGINT.
    const std::string line = "(mkfifo pipe; exec 3<>pipe; \"" + std::string(ZRKEY_COMMAND) +
                             "\" run script.js \"" + module +
                             "\" >&3 & sleep 1; kill -TERM $!; wait $!)";
    EXPECT_EQ(128 + SIGTERM, shell(line).exitCode);
    EXPECT_EQ(kEnd, readFile("calls.txt"));
}

}  // namespace
}  // namespace zr::test
