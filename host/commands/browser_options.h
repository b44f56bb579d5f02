// What the commands of zrkey browser share.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/commands/command_frame.h"
#include "host/web/browser_settings.h"
#include "host/web/browsers.h"
#include "host/web/host_registration.h"

namespace zr::host {

struct ScopeOptions {
    ReportOptions report;
    bool isUser = false;
    bool isSystem = false;

    /// The user's, unless the option says otherwise.
    SettingsScope scope() const { return isSystem ? SettingsScope::kSystem : SettingsScope::kUser; }
    /// Those of a command that shows something: both, unless an option names one.
    std::vector<SettingsScope> scopes() const;
};

struct InstallOptions : ScopeOptions {
    std::string browserNames;
    std::string program;
    bool isForced = false;

    /// Those that are named; all when none is.
    std::vector<Browser> browsers() const;
    /// zrkey-browser, absolute. Throws a Failure when the current folder is needed and gone.
    std::filesystem::path hostProgram() const;
};

struct SiteOptions : ScopeOptions {
    std::string origin;
};

/// "user" or "system".
const char* nameOf(SettingsScope scope);

/// --user and --system, and those of every command.
/// @param what  "The list"; the help goes on: "of this user".
void addScopeOptions(CLI::App& command, ScopeOptions& options, const std::string& what);
/// The same for a command that shows both, unless one is given.
void addShownScopeOptions(CLI::App& command, ScopeOptions& options, const std::string& what);
/// --browser.
void addBrowserOption(CLI::App& command, InstallOptions& options);
/// --host.
void addHostOption(CLI::App& command, InstallOptions& options);
/// --force.
void addForceOption(CLI::App& command, InstallOptions& options, const std::string& help);
/// ORIGIN.
/// @param isRequired  whether the command needs it.
void addOriginWord(CLI::App& command, SiteOptions& options, bool isRequired);

/// Throws a Failure, wrong usage, when the text is not an origin.
Origin requireOrigin(const std::string& asked, const std::string& text);

/// Takes a site off both lists of a file and puts it on the one that is given.
/// @param list  allow or deny; null: neither.
Report moveSite(const SiteOptions& options, const std::string& verb,
                std::vector<Origin> BrowserSettings::*list);

}  // namespace zr::host
