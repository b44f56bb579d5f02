// What the commands of zrkey browser share.
#include "host/commands/browser_options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

#include "host/output/printable.h"
#include "host/system/utf8_path.h"
#include "host/token/paths.h"
#include "host/web/manifest_places.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// Between the names of browsers.
constexpr char kSeparator = ',';

void addFlags(CLI::App& command, ScopeOptions& options, const std::string& user,
              const std::string& system) {
    CLI::Option* first = command.add_flag("--user", options.isUser, user);
    command.add_flag("--system", options.isSystem, system)->excludes(first);
}

/// @return what is wrong with a list of browsers; empty when nothing is.
std::string problemOfBrowsers(const std::string& names) {
    std::istringstream list(names);
    bool isOk = !names.empty();
    for (std::string name; std::getline(list, name, kSeparator);) {
        isOk = isOk && browserNamed(name).has_value();
    }
    return isOk ? "" : "the browser must be chromium, chrome, edge or firefox";
}

/// Why a site that this file allows is not, because of the other file; empty when it is.
std::string noteAbout(const Origin& origin) {
    switch (SitePolicy::read().verdict(origin)) {
        case SiteVerdict::kDeniedBySystem:
            return "zrkey: the administrator denies this site, which wins\n";
        case SiteVerdict::kDeniedByUser:
            return "zrkey: your own list denies this site, which wins\n";
        case SiteVerdict::kUsersMayNotAllow:
            return "zrkey: only the administrator can allow sites here\n";
        default:
            return {};
    }
}

}  // namespace

std::vector<SettingsScope> ScopeOptions::scopes() const {
    if (isUser || isSystem) {
        return {scope()};
    }
    return {SettingsScope::kUser, SettingsScope::kSystem};
}

std::vector<Browser> InstallOptions::browsers() const {
    std::vector<Browser> browsers;
    std::istringstream list(browserNames);
    for (std::string name; std::getline(list, name, kSeparator);) {
        const Browser browser = browserNamed(name).value();
        if (std::find(browsers.begin(), browsers.end(), browser) == browsers.end()) {
            browsers.push_back(browser);
        }
    }
    return browsers.empty() ? std::vector<Browser>(kBrowsers.begin(), kBrowsers.end()) : browsers;
}

fs::path InstallOptions::hostProgram() const {
    return program.empty() ? defaultHostProgram()
                           : absolutePath(toPath(program)).lexically_normal();
}

const char* nameOf(SettingsScope scope) {
    return scope == SettingsScope::kUser ? "user" : "system";
}

void addScopeOptions(CLI::App& command, ScopeOptions& options, const std::string& what) {
    addReportOptions(command, options.report);
    addFlags(command, options, what + " of this user; the default",
             what + " of all users; needs the rights of an administrator");
}

void addShownScopeOptions(CLI::App& command, ScopeOptions& options, const std::string& what) {
    addReportOptions(command, options.report);
    addFlags(command, options, what + " of this user only", what + " of all users only");
}

void addBrowserOption(CLI::App& command, InstallOptions& options) {
    command
        .add_option("--browser", options.browserNames,
                    "The browser: chromium, chrome, edge or firefox, or several with \",\" between "
                    "them; the default is all")
        ->type_name("BROWSER")
        ->check(
            CLI::Validator([](const std::string& names) { return problemOfBrowsers(names); }, ""));
}

void addHostOption(CLI::App& command, InstallOptions& options) {
    command
        .add_option("--host", options.program,
                    "The program zrkey-browser; the default is the one beside this command")
        ->type_name("FILE")
        ->check(isNotEmpty());
}

void addForceOption(CLI::App& command, InstallOptions& options, const std::string& help) {
    command.add_flag("--force", options.isForced, help);
}

void addOriginWord(CLI::App& command, SiteOptions& options, bool isRequired) {
    command
        .add_option("ORIGIN", options.origin,
                    "The site: https, host and port, such as https://example.com:8443")
        ->required(isRequired)
        ->type_name("");
}

Origin requireOrigin(const std::string& asked, const std::string& text) {
    std::string problem;
    const std::optional<Origin> origin = Origin::read(text, problem);
    if (!origin) {
        constexpr std::size_t kMost = 100;
        throw commandFailure(kExitUsage, asked + ' ' + inQuotes(text.substr(0, kMost)),
                             "it " + problem, "give an origin such as https://example.com");
    }
    return *origin;
}

Report moveSite(const SiteOptions& options, const std::string& verb,
                std::vector<Origin> BrowserSettings::*list) {
    const Origin origin = requireOrigin(verb + " the site", options.origin);
    const bool isChanged = changeSettings(options.scope(), [&](BrowserSettings& settings) {
        for (const auto each : {&BrowserSettings::allow, &BrowserSettings::deny}) {
            std::vector<Origin>& origins = settings.*each;
            const auto found = std::find(origins.begin(), origins.end(), origin);
            if (each == list && found == origins.end()) {
                origins.push_back(origin);
            } else if (each != list && found != origins.end()) {
                origins.erase(found);
            }
        }
    });
    if (!list && !isChanged) {
        throw commandFailure(
            kExitNotFound, verb + " the site " + inQuotes(origin.text()),
            std::string("no list of the ").append(nameOf(options.scope())).append(" has it"),
            "zrkey browser list shows the lists");
    }
    const char* done = !list ? "forgot" : list == &BrowserSettings::allow ? "allowed" : "denied";
    Report report;
    report.output.append(done).append(" ").append(origin.text()).append("\n");
    report.fields = {{"origin", origin.text()},
                     {"scope", std::string(nameOf(options.scope()))},
                     {"changed", isChanged}};
    if (list == &BrowserSettings::allow) {
        report.note = noteAbout(origin);
    }
    return report;
}

}  // namespace zr::host
