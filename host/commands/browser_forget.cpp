// zrkey browser forget: takes a site off both lists.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

Report forgetSite(const SiteOptions& options) {
    return moveSite(options, "forget", nullptr);
}

}  // namespace

void addBrowserForgetCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser forget", forgetSite);
    addOriginWord(command, *options, true);
    addScopeOptions(command, *options, "The lists");
}

}  // namespace zr::host
