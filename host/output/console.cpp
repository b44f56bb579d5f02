// The command's own standard output and error, kept apart from the library's diagnostics.
#include "host/output/console.h"

#include <cstdio>

#include "host/output/colour.h"
#include "host/system/system.h"
#include "host/system/terminal.h"

namespace zr::host {

namespace {

/// Calls of the library between two rewinds of the dropped output. A call writes a few hundred
/// bytes.
constexpr unsigned kCallsPerRewind = 256;

}  // namespace

Console* Console::s_current = nullptr;

Console::Console(Diagnostics diagnostics)
    : m_diagnostics(diagnostics),
      m_output(duplicateDescriptor(kStandardOutput)),
      m_error(duplicateDescriptor(kStandardError)),
      m_isOutputTerminal(isTerminal(kStandardOutput)),
      m_isErrorTerminal(isTerminal(kStandardError)),
      m_isOutputColoured(usesColour(kStandardOutput)),
      m_isErrorColoured(usesColour(kStandardError)),
      m_hasProgress(diagnostics == Diagnostics::kDropped && isCapableTerminal(kStandardError)) {
    if (m_diagnostics == Diagnostics::kDropped) {
        m_dropped = openDroppedOutput();
    }
    s_current = this;
    std::fflush(stdout);
    if (m_dropped >= 0) {
        redirectDescriptor(kStandardOutput, m_dropped);
        redirectDescriptor(kStandardError, m_dropped);
    } else if (m_error >= 0) {
        // Also when they were to be dropped and cannot be: they must not mix with the output.
        redirectDescriptor(kStandardOutput, m_error);
    }
}

Console::~Console() {
    s_current = nullptr;
    std::fflush(stdout);
    if (m_output >= 0) {
        redirectDescriptor(kStandardOutput, m_output);
        closeDescriptor(m_output);
    }
    if (m_error >= 0) {
        redirectDescriptor(kStandardError, m_error);
        closeDescriptor(m_error);
    }
    if (m_dropped >= 0) {
        closeDescriptor(m_dropped);
    }
}

std::error_code Console::writeOutput(std::string_view bytes) {
    return writeAll(m_output, bytes);
}

std::error_code Console::writeError(std::string_view bytes) {
    return writeAll(m_error, bytes);
}

void Console::note(std::string_view line) {
    if (s_current && s_current->m_hasNotes) {
        s_current->writeError(line);
    }
}

std::error_code Console::writeFailure(const std::string& line) {
    return writeError(m_isErrorColoured ? withRedName(line) : line);
}

Progress::Write Console::progressLine() {
    return m_hasProgress ? [this](std::string_view text) { writeError(text); } : Progress::Write();
}

void Console::drainDiagnostics() {
    if (m_dropped < 0) {
        std::fflush(stdout);
    } else if (++m_calls % kCallsPerRewind == 0) {
        std::fflush(stdout);
        rewindDroppedOutput(m_dropped);
    }
}

}  // namespace zr::host
