// zrkey browser allow: puts a site on the list of those that may use the tokens.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

Report allowSite(const SiteOptions& options) {
    return moveSite(options, "allow", &BrowserSettings::allow);
}

}  // namespace

void addBrowserAllowCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser allow", allowSite);
    addOriginWord(command, *options, true);
    addScopeOptions(command, *options, "The list");
}

}  // namespace zr::host
