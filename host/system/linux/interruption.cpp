// Interruptions on Linux: signals, noted by a handler.
#include "host/system/interruption.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "host/system/linux/await_descriptor.h"
#include "host/system/terminal.h"

namespace zr::host {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> s_noted = -1;  ///< a descriptor that is readable after an interruption

int s_guards = 0;
std::array<struct sigaction, kSignals.size()> s_before = {};

void unblock(int signal) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

/// Ends the process by the signal's default action.
void raiseDefault(int signal) {
    std::signal(signal, SIG_DFL);
    unblock(signal);
    std::raise(signal);
}

void handleSignal(int signal) {
    const int before = errno;
    noteInterruption(signal);
    errno = before;
}

void installHandlers() {
    if (s_noted < 0) {
        s_noted = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    }
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    // The system's calls that a module makes go on.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : kSignals) {
        sigaddset(&action.sa_mask, signal);
    }
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &s_before[i]);
        if (s_before[i].sa_handler != SIG_IGN) {
            sigaction(kSignals[i], &action, nullptr);
        }
    }
}

void removeHandlers() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &s_before[i], nullptr);
    }
}

}  // namespace

InterruptionGuard::InterruptionGuard() {
    if (s_guards++ == 0) {
        installHandlers();
    }
}

InterruptionGuard::~InterruptionGuard() {
    if (--s_guards == 0) {
        removeHandlers();
    }
}

/// Also called by the handler. A prompt, the only user of the terminal's lock, blocks the signals
/// while it holds it.
void noteInterruption(int signal) {
    int none = 0;
    if (!notedInterruption().compare_exchange_strong(none, signal)) {
        restoreTerminal();
        raiseDefault(signal);
        _exit(128 + signal);
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(s_noted, &one, sizeof one);
}

void forgetInterruption() {
    notedInterruption() = 0;
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t size = read(s_noted, &count, sizeof count);
}

int interruptionExitCode() {
    return 128 + notedInterruption();
}

void endInterrupted() {
    std::fflush(nullptr);
    raiseDefault(notedInterruption());
    _exit(interruptionExitCode());
}

void waitUninterrupted(std::chrono::nanoseconds time) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + time;
    for (;;) {
        const auto rest = std::max(end - Clock::now(), Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(rest);
        const timespec wait = {static_cast<time_t>(seconds.count()),
                               static_cast<long>((rest - seconds).count())};
        pollfd noted = {s_noted, POLLIN, 0};
        // Other signals end it too early.
        if (ppoll(&noted, 1, &wait, nullptr) >= 0 || errno != EINTR) {
            return;
        }
    }
}

bool awaitDescriptor(int descriptor, short events) {
    if (s_guards == 0) {
        return true;
    }
    std::array<pollfd, 2> files = {{{descriptor, events, 0}, {s_noted, POLLIN, 0}}};
    while (poll(files.data(), files.size(), -1) < 0 && errno == EINTR) {
    }
    return files.back().revents == 0;
}

std::size_t mostBytesOfAWrite(std::size_t size) {
    return s_guards == 0 ? size : std::min<std::size_t>(size, PIPE_BUF);
}

}  // namespace zr::host
