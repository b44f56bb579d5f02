// What ends a command from outside while it uses a module: it is noted, so that the command can log
// out and unload the module first. Ctrl-C, SIGTERM and SIGHUP; on Windows Ctrl-C, Ctrl-Break and the
// end of the console. One implementation per target.
//
//     const InterruptionGuard guard;   // from here on an interruption is only noted
//     callTheModule();
//     stopIfInterrupted();             // unwinds to whoever ends the command
#pragma once

#include <atomic>
#include <chrono>

namespace zr::host {

/// Notes interruptions until destruction; without a guard they end the process at once. The second
/// one ends the process at once too, with the terminal's echo restored. What the caller of the
/// process ignores, as nohup does, stays ignored. Guards may be nested; on the main thread only.
class InterruptionGuard {
public:
    InterruptionGuard();
    ~InterruptionGuard();
    InterruptionGuard(const InterruptionGuard&) = delete;
    InterruptionGuard& operator=(const InterruptionGuard&) = delete;
};

/// Whether an interruption was noted. Never in a process whose host is not the command.
bool isInterrupted();
/// What was noted: the signal, on Windows 1; 0: nothing. For the implementations.
std::atomic<int>& notedInterruption();

/// Does what the system's call does; on any thread.
/// @param signal  its number; without a meaning on Windows.
void noteInterruption(int signal);

/// For the start of a command.
void forgetInterruption();

/// Of a process that ends by what was noted: 128 and the signal's number, on Windows 0xC000013A.
int interruptionExitCode();

/// Ends the process by what was noted, so that its caller sees that.
[[noreturn]] void endInterrupted();

/// Waits; an interruption that a guard notes ends it early.
void waitUninterrupted(std::chrono::nanoseconds time);

/// Thrown where a command stops because of an interruption.
struct Interrupted {};

inline void stopIfInterrupted() {
    if (isInterrupted()) {
        throw Interrupted();
    }
}

}  // namespace zr::host
