// zrkey pin change: gives a token a new PIN.
#include "command_frame.h"
#include "terminal.h"
#include "token_session.h"

namespace zr::host {
namespace {

constexpr std::size_t kShortest = 4;
constexpr std::size_t kLongest = 8;

struct PinChangeOptions : TokenOptions {
    PinOptions pin;
    std::optional<PinSource> newPin;
};

Failure wrongPins(const std::string& reason, const std::string& advice) {
    return failed(kExitUsage, "change the PIN", reason, advice);
}

bool isPrompt(const PinSource& source) {
    return source.kind == PinSource::Kind::kPrompt;
}

Secret readNewPin(const PinSource& source) {
    Secret pin = readPin(source, "new PIN: ");
    if (isPrompt(source) && readPin(source, "new PIN again: ").view() != pin.view()) {
        throw wrongPins("the new PIN was not typed twice alike", "type it again");
    }
    return pin;
}

/// Before any try is used up for a change that cannot succeed.
void checkLength(const Secret& pin, const std::string& which) {
    if (pin.view().size() < kShortest || pin.view().size() > kLongest) {
        throw wrongPins("the " + which + " PIN has not 4 to 8 bytes", "use one of this length");
    }
}

Result changePin(const PinChangeOptions& options) {
    PinEntry oldPin(options.pin, PinEntry::Need::kAlways);
    const PinSource newSource = options.newPin.value_or(PinSource());
    std::optional<Secret> newPin;
    if (!isPrompt(newSource)) {
        newPin = readNewPin(newSource);
        checkLength(*newPin, "new");
    } else if (!hasTerminal()) {
        throw noTerminal();
    }
    const TokenSession session(options);
    const Secret& old = *oldPin.get(session.row());
    checkLength(old, "old");
    if (!newPin) {
        newPin = readNewPin(newSource);
        checkLength(*newPin, "new");
    }
    // ModifyPIN logs in by itself; done before, a refused login is told from a refused change.
    session.login(oldPin);
    const HRESULT result =
        session->ModifyPIN(SecretText(old).get(), SecretText(*newPin).get(), oldPin.type());
    if (FAILED(result)) {
        throw refused(kExitFailure, "change the PIN of " + inQuotes(session.row().label), result,
                      "the old PIN is right; the token may not take the new one");
    }
    return {"changed the " + oldPin.role() + " PIN of " + inQuotes(session.row().label) + '\n',
            {{"label", session.row().label}, {"role", oldPin.role()}}};
}

}  // namespace

void addPinChangeCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "pin change", "Gives a token a new PIN", changePin);
    addTokenOptions(*command, *options);
    addPinOptions(*command, options->pin);
    addPinSource(*command, "--new-pin", options->newPin, "Where the new PIN comes from");
}

}  // namespace zr::host
