// Programs that the command starts, on Linux.
#include "host/system/process.h"

#include <cerrno>
#include <csignal>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/system/linux/program_words.h"

namespace zr::host {
namespace {

/// "NAME=value" of each variable, the new ones instead of those of this process.
std::vector<std::string> environmentWith(const ProcessStart& start) {
    std::vector<std::string> all;
    for (char** variable = environ; variable && *variable; ++variable) {
        const std::string text = *variable;
        bool isReplaced = false;
        for (const auto& [name, value] : start.variables) {
            isReplaced = isReplaced || text.starts_with(std::string(name).append("="));
        }
        if (!isReplaced) {
            all.push_back(text);
        }
    }
    for (const auto& [name, value] : start.variables) {
        all.push_back(std::string(name).append("=").append(value));
    }
    return all;
}

class FileActions {
public:
    explicit FileActions(const ProcessStart& start) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, start.output, kStandardOutput);
        posix_spawn_file_actions_adddup2(&m_actions, start.error, kStandardError);
        if (start.inherited) {
            // The same number: the descriptor is not closed.
            posix_spawn_file_actions_adddup2(&m_actions, *start.inherited, *start.inherited);
        }
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions;
};

/// A closed pipe ends the program as usual, although it does not end this process.
class Attributes {
public:
    Attributes() {
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGPIPE);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes;
};

}  // namespace

std::optional<ChildProcess> ChildProcess::start(const ProcessStart& start, std::error_code& error) {
    std::vector<std::string> words = start.words;
    std::vector<std::string> variables = environmentWith(start);
    const FileActions actions(start);
    const Attributes attributes;
    // A caller that ignores it makes the system drop exit codes.
    signal(SIGCHLD, SIG_DFL);
    pid_t process = 0;
    const int result =
        posix_spawnp(&process, words.front().c_str(), actions.get(), attributes.get(),
                     pointersTo(words).data(), pointersTo(variables).data());
    error = std::error_code(result, std::generic_category());
    return result == 0 ? std::optional(ChildProcess(process)) : std::nullopt;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : m_process(std::exchange(other.m_process, 0)), m_exitCode(other.m_exitCode) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    std::swap(m_process, other.m_process);
    std::swap(m_exitCode, other.m_exitCode);
    return *this;
}

ChildProcess::~ChildProcess() = default;

std::optional<int> ChildProcess::exitCode() {
    int status = 0;
    pid_t ended = 0;
    while (m_process != 0 &&
           (ended = waitpid(static_cast<pid_t>(m_process), &status, WNOHANG)) < 0 &&
           errno == EINTR) {
    }
    if (ended != 0) {
        constexpr int kSignalled = 128;
        m_exitCode = ended < 0             ? 1
                     : WIFSIGNALED(status) ? kSignalled + WTERMSIG(status)
                                           : WEXITSTATUS(status);
        m_process = 0;
    }
    return m_exitCode;
}

}  // namespace zr::host
