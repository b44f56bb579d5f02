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
    bool isOpen = true;  ///< whether the descriptor was open at the start

    bool isPrompt() const { return kind == Kind::kPrompt; }
};

/// Parses "prompt", "env:NAME", "file:PATH", "fd:N" or "-"; nullopt for anything else, also for a
/// bare PIN. Call it before the command opens descriptors: "fd:N" must not name one of those.
std::optional<PinSource> parsePinSource(std::string_view text);

/// Reads a PIN: the answer on the terminal, the variable's value, the first line of the file, or
/// the next line of the descriptor and no byte after it. Throws a Failure with kExitUsage when
/// there is no PIN, or it is empty, too long or not UTF-8: the token would get another PIN than the
/// one that was meant.
/// @param prompt  shown on the terminal.
Pin readPin(const PinSource& source, const std::string& prompt);

/// Asks for a new PIN twice on the terminal. Throws a Failure when the answers differ.
/// @param name     "new PIN"
/// @param lengths  what the first prompt states after the name.
/// @param asked    what the command does, for the failure.
Pin promptNewPin(const std::string& name, const std::string& lengths, const std::string& asked);

/// The failure of a command that needs the prompt but has no terminal.
Failure noTerminal();

}  // namespace zr::host
