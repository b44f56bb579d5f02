// zrkey browser forget: takes a site off both lists.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

Report forgetSite(const SiteOptions& options) {
    return moveSite(options, "forget", nullptr);
}

}  // namespace

void addBrowserForgetCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "browser forget",
                   "Takes a site off the lists of allowed and of denied sites", forgetSite);
    addOriginWord(*command, *options, true);
    addScopeOptions(*command, *options, "The lists");
}

}  // namespace zr::host
