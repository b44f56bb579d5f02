// zrkey browser deny: puts a site on the list of those that may not use the tokens.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

Report denySite(const SiteOptions& options) {
    return moveSite(options, "deny", &BrowserSettings::deny);
}

}  // namespace

void addBrowserDenyCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "browser deny",
                   "Forbids a site to use the tokens, whatever other lists say", denySite);
    addOriginWord(*command, *options, true);
    addScopeOptions(*command, *options, "The list");
}

}  // namespace zr::host
