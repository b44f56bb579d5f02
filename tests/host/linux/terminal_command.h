// A fixture for zrkey on a terminal of its own. On Linux only, where a test can create a terminal.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "tests/host/command_token_test.h"

namespace zr::test {

/// zrkey with a new controlling terminal.
class TerminalCommand {
public:
    /// @param output  a file for standard output; null: the terminal.
    explicit TerminalCommand(std::vector<std::string> words, const char* output = nullptr) {
        words.insert(words.begin(), ZRKEY_COMMAND);
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        m_child = forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_child == 0) {
            if (output) {
                dup2(open(output, O_CREAT | O_WRONLY | O_TRUNC, 0600), STDOUT_FILENO);
            }
            execv(arguments[0], arguments.data());
            _exit(127);
        }
    }
    ~TerminalCommand() { close(m_terminal); }
    TerminalCommand(const TerminalCommand&) = delete;
    TerminalCommand& operator=(const TerminalCommand&) = delete;

    /// Reads until a text is shown, or to the end.
    void waitFor(const std::string& text) {
        char byte = 0;
        const std::size_t begin = m_shown.size();
        while (m_shown.find(text, begin) == std::string::npos && read(&byte)) {
            m_shown += byte;
        }
        EXPECT_NE(std::string::npos, m_shown.find(text, begin)) << m_shown;
    }
    void type(const std::string& text) const {
        EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(m_terminal, text.data(), text.size()));
    }
    bool showsNothingFor(int milliseconds) const {
        pollfd shown = {m_terminal, POLLIN, 0};
        return poll(&shown, 1, milliseconds) == 0;
    }
    void send(int signal) const { EXPECT_EQ(0, kill(m_child, signal)); }
    bool isEchoOn() const {
        termios mode = {};
        tcgetattr(m_terminal, &mode);
        return (mode.c_lflag & ECHO) != 0;
    }
    /// Waits for the end of the command; returns everything it has shown.
    std::string finish(int* status) {
        char byte = 0;
        while (read(&byte)) {
            m_shown += byte;
        }
        waitpid(m_child, status, 0);
        return m_shown;
    }

private:
    /// Reads a byte. Kills a command that shows nothing for a long time: it waits for input.
    bool read(char* byte) const {
        pollfd shown = {m_terminal, POLLIN, 0};
        if (poll(&shown, 1, kPatienceMilliseconds) == 0) {
            ADD_FAILURE() << "nothing is shown any more";
            kill(m_child, SIGKILL);
        }
        return ::read(m_terminal, byte, 1) == 1;
    }

    static constexpr int kPatienceMilliseconds = 20000;
    int m_terminal = -1;
    pid_t m_child = -1;
    std::string m_shown;
};

/// Skipped where the system has no pseudo-terminals, as in a bare root folder. The test is a program
/// of its own so that ctest reports it as skipped.
class TerminalTest : public CommandTokenTest {
protected:
    void SetUp() override {
        int terminal = -1;
        int other = -1;
        if (openpty(&terminal, &other, nullptr, nullptr, nullptr) != 0) {
            GTEST_SKIP() << "no pseudo-terminals here";
        }
        close(terminal);
        close(other);
        CommandTokenTest::SetUp();
    }
};

}  // namespace zr::test
