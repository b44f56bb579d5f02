// Where a PIN comes from: never the command line itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "failure.h"
#include "secret.h"

namespace zr::host {

struct PinSource {
    enum class Kind { kPrompt, kEnvironment, kFile, kDescriptor };
    Kind kind = Kind::kPrompt;
    std::string name;    ///< of the variable or the file
    int descriptor = 0;  ///< 0 is standard input
    bool isOpen = true;  ///< whether the caller handed the descriptor over
};

/// Reads "prompt", "env:NAME", "file:PATH", "fd:N" or "-"; nothing else, a bare PIN least of all.
/// To be called before the command opens descriptors of its own, which are no source.
std::optional<PinSource> parsePinSource(std::string_view text);

/// Takes the PIN: the answer on the terminal, the variable's value, or the next line of the file or
/// descriptor, of which no more is read. Throws a Failure of wrong usage when there is none, and
/// when it could not reach the token as it is: empty, over-long, not UTF-8.
/// @param prompt  shown on the terminal.
Secret readPin(const PinSource& source, const std::string& prompt);

/// The failure to ask for a PIN without a terminal.
Failure noTerminal();

}  // namespace zr::host
