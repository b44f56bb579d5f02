// The command's own standard output and error, kept apart from the library's diagnostics.
//
// The library writes lines to the process's standard output and error. While a Console lives, both
// lead elsewhere, and what the command has to say goes to the streams it was started with.
#pragma once

#include <string_view>

namespace zr::host {

/// What becomes of the library's diagnostics.
enum class Diagnostics { kDropped, kOnStandardError };

class Console {
public:
    explicit Console(Diagnostics diagnostics);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Bytes for standard output, written as they are and at once.
    /// @return false when a part could not be written.
    bool writeOutput(std::string_view bytes);
    /// Bytes for standard error.
    void writeError(std::string_view bytes);

    /// To be called after calls of the library: bounds or passes on what it has written.
    void drainDiagnostics();

private:
    Diagnostics m_diagnostics;
    int m_output;
    int m_error;
    int m_dropped = -1;
    unsigned m_calls = 0;
};

}  // namespace zr::host
