// Starts a pinentry.
#include "host/browser/linux/pinentry_start.h"

#include <algorithm>
#include <csignal>
#include <string_view>

#include <sys/prctl.h>
#include <unistd.h>

#include "host/system/linux/program_words.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

/// The variables that may come from the browser: not those that make a program load other files.
constexpr std::string_view kPassedOn[] = {"DBUS_SESSION_BUS_ADDRESS",
                                          "DISPLAY",
                                          "HOME",
                                          "LANG",
                                          "LANGUAGE",
                                          "LOGNAME",
                                          "TERM",
                                          "USER",
                                          "WAYLAND_DISPLAY",
                                          "XAUTHORITY",
                                          "XDG_CURRENT_DESKTOP",
                                          "XDG_RUNTIME_DIR",
                                          "XDG_SESSION_TYPE"};

/// In the child: nothing but calls of the system, since other threads may have held locks.
[[noreturn]] void become(const char* program, char* const* words, char* const* variables,
                         int descriptor, pid_t parent) {
    setsid();
    // The window does not stay when this process is killed.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const bool isReady = getppid() == parent && dup2(descriptor, kStandardInput) >= 0 &&
                         dup2(descriptor, kStandardOutput) >= 0 &&
                         // A module may have left descriptors open for children.
                         close_range(kStandardError + 1, ~0U, 0) == 0;
    if (isReady) {
        execve(program, words, variables);
    }
    constexpr int kNotStarted = 127;
    _exit(kNotStarted);
}

}  // namespace

std::vector<std::string> pinentryVariables() {
    // A pinentry may be a script that looks for the one of the desktop.
    std::vector<std::string> variables = {"PATH=/usr/local/bin:/usr/bin:/bin"};
    forEachVariable([&](std::string_view name, std::string_view value) {
        if (name.starts_with("LC_") ||
            std::find(std::begin(kPassedOn), std::end(kPassedOn), name) != std::end(kPassedOn)) {
            variables.push_back(std::string(name).append("=").append(value));
        }
    });
    return variables;
}

pid_t startPinentry(const std::string& program, int descriptor) {
    if (!program.starts_with('/') || descriptor <= kStandardError) {
        return -1;
    }
    // If SIGCHLD is ignored, the system forgets the child before we can wait for it.
    signal(SIGCHLD, SIG_DFL);
    std::vector<std::string> texts = {program};
    std::vector<std::string> variables = pinentryVariables();
    const std::vector<char*> words = pointersTo(texts);
    const std::vector<char*> environment = pointersTo(variables);
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
        become(program.c_str(), words.data(), environment.data(), descriptor, parent);
    }
    return process;
}

}  // namespace zr::host
