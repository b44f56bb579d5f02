// The streams to the browser, out of the reach of modules; and the end of the process. One
// implementation per target.
#pragma once

namespace zr::host {

struct OwnStreams {
    int input;
    int output;
};

/// Moves standard input and output to other descriptors: what a module prints goes to standard error,
/// and a module that reads finds an empty input. Programs that a module starts do not inherit the
/// streams. To be called first of all.
OwnStreams takeStreams();

/// Notes the signals by which browsers and the system end processes, so that the reader takes them for
/// the end of the input. On Windows there are none.
void noteSignals();

/// Ends the process at once, whatever its other threads do.
[[noreturn]] void endProcess(int exitCode);

}  // namespace zr::host
