// Where a PIN comes from: never the command line itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/output/failure.h"
#include "host/token/pin.h"

namespace zr::host {

struct PinSource {
    enum class Kind { kPrompt, kEnvironment, kFile, kDescriptor };
    Kind kind = Kind::kPrompt;
    std::string name;    ///< of the variable or the file
    int descriptor = 0;  ///< 0 is standard input
    bool isOpen = true;  ///< whether the caller passed the descriptor on
};

/// Parses "prompt", "env:NAME", "file:PATH", "fd:N" or "-"; nullopt for all else, a bare PIN
/// included. To be called before the command opens descriptors of its own, which are no sources.
std::optional<PinSource> parsePinSource(std::string_view text);

/// Reads a PIN: the answer on the terminal, the variable's value, or the next line of the file or
/// descriptor, and no byte behind that line. Throws a Failure with kExitUsage when there is none,
/// and when it is empty, too long or not UTF-8: the token would get another PIN than the one meant.
/// @param prompt  shown on the terminal.
Pin readPin(const PinSource& source, const std::string& prompt);

/// The failure to ask for a PIN without a terminal.
Failure noTerminal();

}  // namespace zr::host
