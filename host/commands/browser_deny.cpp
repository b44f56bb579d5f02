// zrkey browser deny: puts a site on the list of those that may not use the tokens.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

Report denySite(const SiteOptions& options) {
    return moveSite(options, "deny", &BrowserSettings::deny);
}

}  // namespace

void addBrowserDenyCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser deny", denySite);
    addOriginWord(command, *options, true);
    addScopeOptions(command, *options, "The list");
}

}  // namespace zr::host
