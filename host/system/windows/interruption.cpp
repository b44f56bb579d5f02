// Interruptions on Windows: events of the console, noted by a handler on a thread of its own.
#include "host/system/interruption.h"

#include <cstdio>

#include <windows.h>

#include "host/system/terminal.h"

namespace zr::host {
namespace {

/// STATUS_CONTROL_C_EXIT: the exit code of a process that a console event ends.
constexpr UINT kExitCode = 0xC000013A;

int s_guards = 0;

/// Signalled by an interruption.
HANDLE notedEvent() {
    static const HANDLE s_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return s_event;
}

BOOL WINAPI handleEvent(DWORD event) {
    noteInterruption(0);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system ends the process when this returns: leave the main thread its time.
        Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

InterruptionGuard::InterruptionGuard() {
    if (s_guards++ == 0) {
        notedEvent();
        SetConsoleCtrlHandler(handleEvent, TRUE);
    }
}

InterruptionGuard::~InterruptionGuard() {
    if (--s_guards == 0) {
        SetConsoleCtrlHandler(handleEvent, FALSE);
    }
}

void noteInterruption(int) {
    if (notedInterruption().exchange(1) != 0) {
        restoreTerminal();
        TerminateProcess(GetCurrentProcess(), kExitCode);
    }
    SetEvent(notedEvent());
}

void forgetInterruption() {
    notedInterruption() = 0;
    ResetEvent(notedEvent());
}

int interruptionExitCode() {
    return static_cast<int>(kExitCode);
}

void endInterrupted() {
    std::fflush(nullptr);
    ExitProcess(kExitCode);
}

void waitUninterrupted(std::chrono::nanoseconds time) {
    // Not shorter than asked for.
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(time).count();
    WaitForSingleObject(notedEvent(), static_cast<DWORD>(milliseconds > 0 ? milliseconds : 0));
}

}  // namespace zr::host
