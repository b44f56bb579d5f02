// zrkey login: checks a PIN and does nothing else.
#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct LoginOptions : TokenOptions {
    PinOptions pin;
};

Report login(const LoginOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kAlways);
    const TokenSession session(options);
    session.login(pin);
    return {"logged in to " + inQuotes(session.row().label) + " as " + pin.role() + '\n',
            {{"label", session.row().label}, {"role", pin.role()}}};
}

}  // namespace

void addLoginCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "login", login);
    addTokenOptions(command, *options);
    addPinOptions(command, options->pin);
}

}  // namespace zr::host
