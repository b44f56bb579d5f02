// The command's own standard output and error, kept apart from the library's diagnostics.
//
// The library writes lines to the process's standard output and error. A Console redirects both
// until its destruction; the command writes through it to the streams that it was started with.
#pragma once

#include <string_view>
#include <system_error>

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

    /// Writes a line to standard error through the console that there is; without one it is dropped.
    /// For what happens too deep in a command to have the console.
    static void note(std::string_view line);

    /// Flushes what the library wrote, or bounds it where it is dropped. To be called after calls
    /// of the library.
    void drainDiagnostics();

private:
    static Console* s_current;

    Diagnostics m_diagnostics;
    int m_output;
    int m_error;
    int m_dropped = -1;
    unsigned m_calls = 0;
};

}  // namespace zr::host
