// zrkey browser list: the sites that may or may not use the tokens.
#include "host/commands/browser_options.h"

namespace zr::host {
namespace {

struct VerdictRow {
    const char* text;
    const char* scope;  ///< of the list that decides; "-": none
};

VerdictRow rowOf(SiteVerdict verdict) {
    switch (verdict) {
        case SiteVerdict::kAllowedBySystem:
            return {"allowed", "system"};
        case SiteVerdict::kAllowedByUser:
            return {"allowed", "user"};
        case SiteVerdict::kDeniedBySystem:
            return {"denied", "system"};
        case SiteVerdict::kDeniedByUser:
            return {"denied", "user"};
        case SiteVerdict::kUsersMayNotAllow:
            return {"not allowed", "user"};
        case SiteVerdict::kNotListed:
            break;
    }
    return {"not listed", "-"};
}

Report judgeSite(const std::string& text) {
    const Origin origin = requireOrigin("judge the site", text);
    const SitePolicy policy = SitePolicy::read();
    const VerdictRow row = rowOf(policy.verdict(origin));
    Report report;
    report.output.append(row.text).append("\t").append(row.scope).append("\t");
    report.output.append(origin.text()).append("\n");
    report.fields = {{"origin", origin.text()},
                     {"allowed", policy.allows(origin)},
                     {"verdict", std::string(row.text)},
                     {"scope", std::string(row.scope)}};
    report.exitCode = policy.allows(origin) ? kExitOk : kExitNotFound;
    return report;
}

Report listSites(const SiteOptions& options) {
    if (!options.origin.empty()) {
        return judgeSite(options.origin);
    }
    Report report;
    std::vector<Record> records;
    for (const SettingsScope scope : options.scopes()) {
        const BrowserSettings settings = readSettings(scope);
        const auto add = [&](const char* rule, const std::vector<Origin>& origins) {
            for (const Origin& origin : origins) {
                report.output.append(rule).append("\t").append(nameOf(scope)).append("\t");
                report.output.append(origin.text()).append("\n");
                records.push_back({{"rule", std::string(rule)},
                                   {"scope", std::string(nameOf(scope))},
                                   {"origin", origin.text()}});
            }
        };
        add("allow", settings.allow);
        add("deny", settings.deny);
    }
    report.fields = {{"sites", records}};
    return report;
}

}  // namespace

void addBrowserListCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser list", listSites);
    addOriginWord(command, *options, false);
    addShownScopeOptions(command, *options, "The lists");
}

}  // namespace zr::host
