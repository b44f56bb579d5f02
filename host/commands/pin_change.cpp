// zrkey pin change: changes a PIN of a token.
#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/system/terminal.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

/// Those that the library changes.
constexpr PinLengths kLengths = {4, 8};
constexpr const char* kAsked = "change the PIN";

struct PinChangeOptions : TokenOptions {
    PinOptions pin;
    std::optional<PinSource> newPin;
};

Failure wrongPins(const std::string& cause, const std::string& advice) {
    return commandFailure(kExitUsage, kAsked, cause, advice);
}

/// Rejects a PIN of a length that the library refuses, before a login could cost a retry.
void checkLength(const Pin& pin, const std::string& which) {
    if (pin.view().size() < kLengths.shortest || pin.view().size() > kLengths.longest) {
        throw wrongPins("the " + which + " PIN must be 4 to 8 bytes long",
                        "give a PIN of that length");
    }
}

/// A PIN that another tool made longer is correct, but the library does not take it.
void checkOldLength(const Pin& pin, const PinEntry& entry) {
    if (pin.view().size() > kLengths.longest) {
        throw wrongPins(
            "the old PIN is longer than 8 bytes, which the object model does not accept",
            entry.isSecurityOfficer() ? "change it with the tool of the token's issuer"
                                      : "change it with the tool of the token's issuer, or let the "
                                        "security officer set a new one with zrkey pin unblock");
    }
    checkLength(pin, "old");
}

Report changePin(const PinChangeOptions& options) {
    PinEntry oldPin(options.pin, PinEntry::Need::kAlways);
    const PinSource newSource = options.newPin.value_or(PinSource());
    std::optional<Pin> newPin;
    if (!newSource.isPrompt()) {
        newPin = readPin(newSource, "");
        checkLength(*newPin, "new");
    } else if (!hasTerminal()) {
        throw noTerminal();
    }
    const TokenSession session(options);
    const Pin& old = *session.pinFor(oldPin, kLengths);
    checkOldLength(old, oldPin);
    if (!newPin) {
        newPin = promptNewPin("new PIN", session.pinLengths().within(kLengths).text(), kAsked);
        checkLength(*newPin, "new");
    }
    // ModifyPIN logs in too. This login comes first so that a refused login and a refused change
    // get different messages.
    session.login(oldPin);
    const HRESULT result =
        session->ModifyPIN(PinText(old).get(), PinText(*newPin).get(), oldPin.type());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "change the PIN of " + inQuotes(session.row().label),
                             result,
                             "the old PIN is correct; the token may not accept the new one");
    }
    return {"changed the " + oldPin.role() + " PIN of " + inQuotes(session.row().label) + '\n',
            {{"label", session.row().label}, {"role", oldPin.role()}}};
}

}  // namespace

void addPinChangeCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "pin change", changePin);
    addTokenOptions(command, *options);
    addPinOptions(command, options->pin);
    addPinSource(command, "--new-pin", options->newPin, "Where to read the new PIN");
}

}  // namespace zr::host
