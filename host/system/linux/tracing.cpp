// Runs this command with a spy between the library and the module, on Linux.
#include "host/system/tracing.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/system/process.h"

namespace zr::host {
namespace {

/// Names the spy in the environment of a command that is traced.
constexpr const char* kSpyVariable = "ZRKEY_TRACE_SPY";
// Read by the spy: the module that it calls, and where it writes.
constexpr const char* kModuleVariable = "PKCS11SPY";
constexpr const char* kOutputVariable = "PKCS11SPY_OUTPUT";
constexpr std::string_view kDescriptors = "/dev/fd/";

std::error_code lastError() {
    return {errno, std::generic_category()};
}

class Pipe {
public:
    Pipe() { m_isOpen = pipe2(m_ends.data(), O_CLOEXEC) == 0; }
    ~Pipe() {
        if (m_isOpen) {
            close(m_ends[0]);
            closeInput();
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool isOpen() const { return m_isOpen; }
    int output() const { return m_ends[0]; }
    int input() const { return m_ends[1]; }
    /// So that its end can be seen.
    void closeInput() {
        if (m_ends[1] >= 0) {
            close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
    bool m_isOpen = false;
};

volatile std::sig_atomic_t s_signalToPassOn = 0;

extern "C" void notePassedSignal(int signal) {
    s_signalToPassOn = signal;
}

/// Signals are for the traced command: what it writes until its end is still shown. The terminal
/// sends Ctrl-C to both; the others are passed on.
class SignalsPassedOn {
public:
    SignalsPassedOn() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            const bool isFromTerminal = kSignals[i] == SIGINT || kSignals[i] == SIGQUIT;
            struct sigaction action = {};
            action.sa_handler = isFromTerminal ? SIG_IGN : notePassedSignal;
            sigaction(kSignals[i], &action, &m_before[i]);
        }
    }
    ~SignalsPassedOn() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], &m_before[i], nullptr);
        }
    }
    SignalsPassedOn(const SignalsPassedOn&) = delete;
    SignalsPassedOn& operator=(const SignalsPassedOn&) = delete;

private:
    static constexpr std::array kSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    std::array<struct sigaction, kSignals.size()> m_before = {};
};

/// Takes what is in the pipe.
/// @param milliseconds  how long to wait for it.
/// @return false at the end, and when nothing came.
bool takeSome(int descriptor, int milliseconds, const std::function<void(std::string_view)>& take) {
    pollfd waiting = {descriptor, POLLIN, 0};
    if (poll(&waiting, 1, milliseconds) <= 0) {
        return false;
    }
    std::array<char, 4096> bytes;
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count > 0) {
        take({bytes.data(), static_cast<std::size_t>(count)});
    }
    secureErase(bytes.data(), bytes.size());
    return count > 0;
}

int takeUntilTheEnd(ChildProcess& command, int descriptor,
                    const std::function<void(std::string_view)>& take) {
    constexpr int kMilliseconds = 20;
    std::optional<int> code;
    while (!code) {
        if (!takeSome(descriptor, kMilliseconds, take)) {
            // The pipe may have no writer any more, and poll does not wait then.
            poll(nullptr, 0, kMilliseconds);
        }
        if (s_signalToPassOn != 0) {
            kill(static_cast<pid_t>(command.id()), s_signalToPassOn);
            s_signalToPassOn = 0;
        }
        code = command.exitCode();
    }
    // Not until the pipe's end: a program that the command started may keep it open.
    while (takeSome(descriptor, 0, take)) {
    }
    return *code;
}

}  // namespace

NoSpy whyNoSpy() {
    return {"OpenSC's spy module is not installed", "install the package opensc-pkcs11"};
}

std::string findSpy() {
    for (const char* folder : {"/usr/lib/x86_64-linux-gnu", "/usr/lib64", "/usr/lib"}) {
        for (const char* file : {"/pkcs11/pkcs11-spy.so", "/pkcs11-spy.so"}) {
            std::error_code ignored;
            std::string path = std::string(folder).append(file);
            if (std::filesystem::exists(path, ignored)) {
                return path;
            }
        }
    }
    return {};
}

std::optional<int> runTraced(const std::string& spy, const std::vector<std::string>& words,
                             const std::function<void(std::string_view)>& take,
                             std::error_code& error) {
    Pipe pipe;
    if (!pipe.isOpen()) {
        error = lastError();
        return std::nullopt;
    }
    ProcessStart start = {{"/proc/self/exe"}};
    start.words.insert(start.words.end(), words.begin(), words.end());
    start.variables = {
        {kSpyVariable, spy},
        {kOutputVariable, std::string(kDescriptors).append(std::to_string(pipe.input()))}};
    start.inherited = pipe.input();
    std::optional<ChildProcess> command = ChildProcess::start(start, error);
    if (!command) {
        return std::nullopt;
    }
    const SignalsPassedOn signals;
    pipe.closeInput();
    return takeUntilTheEnd(*command, pipe.output(), take);
}

std::string spyInsteadOf(const std::string& module, std::error_code& error) {
    const std::string spy = environmentVariable(kSpyVariable).value_or("");
    std::error_code ignored;
    // The spy would call itself without end.
    if (spy.empty() || std::filesystem::equivalent(module, spy, ignored)) {
        return {};
    }
    // The spy writes to standard error when it cannot open its output.
    const std::string output = environmentVariable(kOutputVariable).value_or("");
    const int descriptor = open(output.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    struct stat file = {};
    if (descriptor < 0 || fstat(descriptor, &file) != 0) {
        error = lastError();
    } else if (!S_ISFIFO(file.st_mode)) {
        error = std::make_error_code(std::errc::invalid_argument);
    }
    if (!error && setenv(kModuleVariable, module.c_str(), 1) != 0) {
        error = lastError();
    }
    if (descriptor >= 0) {
        close(descriptor);
    }
    return error ? std::string() : spy;
}

}  // namespace zr::host
