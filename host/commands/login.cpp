// zrkey login: checks a PIN and does nothing else.
#include "command_frame.h"
#include "token_session.h"

namespace zr::host {
namespace {

struct LoginOptions : TokenOptions {
    PinOptions pin;
};

Result login(const LoginOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kAlways);
    const TokenSession session(options);
    session.login(pin);
    return {"logged in to " + inQuotes(session.row().label) + " as " + pin.role() + '\n',
            {{"label", session.row().label}, {"role", pin.role()}}};
}

}  // namespace

void addLoginCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "login", "Checks a PIN and does nothing else", login);
    addTokenOptions(*command, *options);
    addPinOptions(*command, options->pin);
}

}  // namespace zr::host
