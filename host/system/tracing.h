// Runs this command with a spy between the library and the module: OpenSC's spy module, which writes
// down each call. On Linux only; the implementation for Windows finds no spy.
//
// The spy writes PINs too. What it writes goes into a pipe and never into a file; who reads the pipe
// leaves the PINs out.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace zr::host {

struct NoSpy {
    const char* cause;
    const char* advice;
};

/// Why findSpy finds none.
NoSpy whyNoSpy();

/// The path of the spy module; empty when it is not installed.
std::string findSpy();

/// Runs this command with other words, and the spy. Ctrl-C is left to that command.
/// @param take  gets what the spy writes, in parts. It may contain PINs.
/// @return the exit code, 128 and the number after a signal; nullopt when it cannot be started:
///         error says why.
std::optional<int> runTraced(const std::string& spy, const std::vector<std::string>& words,
                             const std::function<void(std::string_view)>& take,
                             std::error_code& error);

/// For a command that is run so: makes the spy load a module.
/// @param error  says why the spy cannot write; it would use standard error then.
/// @return the path of the spy, which is to be loaded instead; empty when there is no trace.
std::string spyInsteadOf(const std::string& module, std::error_code& error);

}  // namespace zr::host
