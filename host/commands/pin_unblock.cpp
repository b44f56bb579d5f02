// zrkey pin unblock: gives the user a new PIN, as the security officer.
#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/system/terminal.h"
#include "host/token/direct_session.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct PinUnblockOptions : TokenOptions {
    PinOptions pin;
    std::optional<PinSource> newPin;
};

void checkLength(const Pin& pin, const PinLengths& allowed, const std::string& asked) {
    const std::size_t size = pin.view().size();
    if (allowed.longest > 0 && (size < allowed.shortest || size > allowed.longest)) {
        throw commandFailure(kExitUsage, asked,
                             "the token takes a PIN of " + std::to_string(allowed.shortest) +
                                 " to " + std::to_string(allowed.longest) + " bytes",
                             "give a new PIN of that length");
    }
}

Report unblock(const PinUnblockOptions& options) {
    PinEntry officer(options.pin, PinEntry::Need::kAlways);
    const PinSource newSource = options.newPin.value_or(PinSource());
    std::optional<Pin> newPin;
    if (!newSource.isPrompt()) {
        newPin = readPin(newSource, "");
    } else if (!hasTerminal()) {
        throw noTerminal();
    }
    const TokenSession session(options);
    const std::string& label = session.row().label;
    const std::string asked = "unblock the user PIN of " + inQuotes(label);
    const PinLengths allowed = session.pinLengths();
    if (newPin) {
        checkLength(*newPin, allowed, asked);
    }
    session.pinFor(officer);
    if (!newPin) {
        newPin = promptNewPin("new user PIN", allowed.text(), asked);
        checkLength(*newPin, allowed, asked);
    }
    session.login(officer);
    DirectSession direct(session, asked, CryptokiSession::Access::kReadWrite);
    direct.require(direct->initPin(*newPin));
    return {"unblocked the user PIN of " + inQuotes(label) + '\n', {{"label", label}}};
}

}  // namespace

void addPinUnblockCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "pin unblock", unblock);
    options->pin.securityOfficer = true;
    addTokenOptions(command, *options);
    addPinSource(command, "--pin", options->pin.source, "Where to read the security officer's PIN");
    addLastTryOption(command, options->pin);
    addPinSource(command, "--new-pin", options->newPin, "Where to read the new user PIN");
}

}  // namespace zr::host
