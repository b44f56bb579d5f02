// A program whose standard input and output are pipes of the test, on Linux.
#include "tests/host/browser/piped_process.h"

#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zr::test {

std::pair<int, int> makePipe() {
    int ends[2] = {-1, -1};
    return pipe2(ends, O_CLOEXEC) == 0 ? std::pair(ends[0], ends[1]) : std::pair(-1, -1);
}

PipedProcess::PipedProcess(const std::vector<std::string>& words, const std::string& errors) {
    const auto [childInput, input] = makePipe();
    const auto [output, childOutput] = makePipe();
    m_input = input;
    m_output = output;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, childInput, 0);
    posix_spawn_file_actions_adddup2(&actions, childOutput, 1);
    posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawn(&process, arguments.front(), &actions, nullptr, arguments.data(), environ) ==
        0) {
        m_process = process;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(childInput);
    close(childOutput);
}

PipedProcess::~PipedProcess() {
    closeInput();
    closeOutput();
    if (m_process != 0 && !exitCode(std::chrono::milliseconds(0))) {
        kill(static_cast<pid_t>(m_process), SIGKILL);
        exitCode(std::chrono::seconds(10));
    }
}

void PipedProcess::closeInput() {
    if (m_input >= 0) {
        close(std::exchange(m_input, -1));
    }
}

void PipedProcess::closeOutput() {
    if (m_output >= 0) {
        close(std::exchange(m_output, -1));
    }
}

void PipedProcess::terminate() const {
    kill(static_cast<pid_t>(m_process), SIGTERM);
}

std::optional<int> PipedProcess::exitCode(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!m_exitCode) {
        int status = 0;
        if (waitpid(static_cast<pid_t>(m_process), &status, WNOHANG) == m_process) {
            m_exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        } else if (std::chrono::steady_clock::now() >= end) {
            break;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    return m_exitCode;
}

}  // namespace zr::test
