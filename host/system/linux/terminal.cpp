// Prompting on the controlling terminal on Linux: /dev/tty without echo.
#include "host/system/terminal.h"

#include <array>
#include <csignal>
#include <mutex>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "host/system/system.h"

namespace zr::host {
namespace {

enum class Echo { kOff, kOn };

volatile std::sig_atomic_t s_signal = 0;

void noteSignal(int signal) {
    s_signal = signal;
}

/// Blocks the signals that would end the process until destruction, except inside await, which they
/// end: the echo is switched on again before they take effect.
class SignalGuard {
public:
    SignalGuard() {
        s_signal = 0;
        struct sigaction action = {};
        action.sa_handler = noteSignal;
        sigemptyset(&action.sa_mask);
        sigset_t held;
        sigemptyset(&held);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], nullptr, &m_before[i]);
            // A signal that the caller ignores, as nohup does, must not end the prompt either.
            if (m_before[i].sa_handler != SIG_IGN) {
                sigaddset(&held, kSignals[i]);
                sigaction(kSignals[i], &action, nullptr);
            }
        }
        sigprocmask(SIG_BLOCK, &held, &m_maskBefore);
    }
    ~SignalGuard() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], &m_before[i], nullptr);
        }
        sigprocmask(SIG_SETMASK, &m_maskBefore, nullptr);
        if (s_signal != 0) {
            raise(s_signal);
        }
    }
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

    /// Waits until there is something to read.
    /// @return false when a signal came first.
    bool await(int descriptor) const {
        pollfd input = {descriptor, POLLIN, 0};
        return ppoll(&input, 1, nullptr, &m_maskBefore) == 1;
    }

private:
    static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    std::array<struct sigaction, kSignals.size()> m_before = {};
    sigset_t m_maskBefore = {};
};

class PromptTerminal;
std::mutex s_prompting;
const PromptTerminal* s_terminal = nullptr;  ///< guarded by s_prompting

/// The terminal, open and without echo, or with it, until destruction.
class PromptTerminal {
public:
    explicit PromptTerminal(Echo echo)
        : m_descriptor(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        m_isChanged = m_descriptor >= 0 && tcgetattr(m_descriptor, &m_before) == 0;
        if (m_isChanged) {
            termios mode = m_before;
            mode.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
            mode.c_lflag |= ICANON | ISIG | (echo == Echo::kOn ? ECHO : 0);
            const std::lock_guard lock(s_prompting);
            m_isChanged = tcsetattr(m_descriptor, TCSAFLUSH, &mode) == 0;
            s_terminal = this;
        }
    }
    ~PromptTerminal() {
        {
            const std::lock_guard lock(s_prompting);
            s_terminal = nullptr;
            restore();
        }
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    PromptTerminal(const PromptTerminal&) = delete;
    PromptTerminal& operator=(const PromptTerminal&) = delete;

    bool isReady() const { return m_isChanged; }
    int descriptor() const { return m_descriptor; }
    void restore() const {
        if (m_isChanged) {
            tcsetattr(m_descriptor, TCSAFLUSH, &m_before);
        }
    }

private:
    int m_descriptor;
    bool m_isChanged;
    termios m_before = {};
};

PromptResult readLine(const SignalGuard& signals, int descriptor,
                      const std::function<bool(char)>& take) {
    PromptResult result = PromptResult::kAnswered;
    for (;;) {
        char byte = 0;
        std::error_code error;
        if (!signals.await(descriptor) || readSome(descriptor, &byte, 1, error) != 1) {
            return PromptResult::kCancelled;
        }
        if (byte == '\n') {
            return result;
        }
        if (!take(byte)) {
            result = PromptResult::kTooLong;
        }
        secureErase(&byte, 1);
    }
}

PromptResult promptWith(Echo echo, const std::string& prompt,
                        const std::function<bool(char)>& take) {
    const SignalGuard signals;
    const PromptTerminal terminal(echo);
    if (!terminal.isReady()) {
        return PromptResult::kNoTerminal;
    }
    writeAll(terminal.descriptor(), prompt);
    const PromptResult result = readLine(signals, terminal.descriptor(), take);
    if (echo == Echo::kOff || result == PromptResult::kCancelled) {
        writeAll(terminal.descriptor(), "\n");
    }
    return result;
}

}  // namespace

bool hasTerminal() {
    const int descriptor = open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (descriptor >= 0) {
        close(descriptor);
    }
    return descriptor >= 0;
}

PromptResult promptHidden(const std::string& prompt, const std::function<bool(char)>& take) {
    return promptWith(Echo::kOff, prompt, take);
}

PromptResult promptVisible(const std::string& prompt, const std::function<bool(char)>& take) {
    return promptWith(Echo::kOn, prompt, take);
}

void restoreTerminal() {
    // A handler of signals calls this too: none may come to a thread that holds the lock.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    {
        const std::lock_guard lock(s_prompting);
        if (s_terminal) {
            s_terminal->restore();
        }
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool isTerminal(int descriptor) {
    return isatty(descriptor) != 0;
}

bool isCapableTerminal(int descriptor) {
    const std::string kind = environmentVariable("TERM").value_or("");
    return isTerminal(descriptor) && !kind.empty() && kind != "dumb";
}

}  // namespace zr::host
