// The command's own standard output and error, kept apart from the library's diagnostics.
//
// The library writes lines to the process's standard output and error. A Console redirects both
// until its destruction; the command writes through it to the streams that it was started with.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "host/output/progress.h"

namespace zr::host {

/// Where the library's diagnostics go.
enum class Diagnostics { kDropped, kOnStandardError };

class Console {
public:
    explicit Console(Diagnostics diagnostics);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Writes bytes to standard output, unchanged and without a buffer.
    std::error_code writeOutput(std::string_view bytes);
    /// The same to standard error.
    std::error_code writeError(std::string_view bytes);

    /// The streams that the command was started with, for programs that it starts.
    int outputDescriptor() const { return m_output; }
    int errorDescriptor() const { return m_error; }

    /// A line about a failure; its "zrkey:" is red where colours are used.
    std::error_code writeFailure(const std::string& line);

    bool isOutputTerminal() const { return m_isOutputTerminal; }
    bool isErrorTerminal() const { return m_isErrorTerminal; }
    /// Whether text of writeOutput may be coloured.
    bool isOutputColoured() const { return m_isOutputColoured; }
    /// For Progress. Writes to standard error when it is a terminal, and nothing else does.
    Progress::Write progressLine();
    /// From now on progressLine is empty.
    void hideProgress() { m_hasProgress = false; }

    /// Writes a line to standard error through the console that there is; without one it is dropped.
    /// For what happens too deep in a command to have the console.
    static void note(std::string_view line);
    /// From now on notes are dropped.
    void hideNotes() { m_hasNotes = false; }

    /// Flushes what the library wrote, or bounds it where it is dropped. To be called after calls
    /// of the library.
    void drainDiagnostics();

private:
    static Console* s_current;

    bool m_hasNotes = true;
    Diagnostics m_diagnostics;
    int m_output;
    int m_error;
    int m_dropped = -1;
    bool m_isOutputTerminal;
    bool m_isErrorTerminal;
    bool m_isOutputColoured;
    bool m_isErrorColoured;
    bool m_hasProgress;
    unsigned m_calls = 0;
};

}  // namespace zr::host
