// zrkey browser allow: puts a site on the list of those that may use the tokens.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

Report allowSite(const SiteOptions& options) {
    return moveSite(options, "allow", &BrowserSettings::allow);
}

}  // namespace

void addBrowserAllowCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "browser allow", "Lets a site use the tokens", allowSite);
    addOriginWord(*command, *options, true);
    addScopeOptions(*command, *options, "The list");
}

}  // namespace zr::host
