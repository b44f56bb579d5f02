// browser.json, the settings of the native messaging host: one file of the user and one of the
// administrator. docs/web.md describes them, docs/browser.schema.json is their schema.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/web/origin.h"

namespace zr::host {

enum class SettingsScope { kUser, kSystem };

/// What one file says. Every part may be absent.
struct BrowserSettings {
    std::optional<std::string> module;         ///< a file, absolute
    std::optional<std::string> configuration;  ///< config.xml for the library, absolute
    std::optional<std::string> pinentry;       ///< a program, absolute; Linux only
    std::vector<Origin> allow;
    std::vector<Origin> deny;
    /// Identifiers of extensions that may start the host beside those that it knows.
    std::vector<std::string> extensions;
    bool usersMayAllow = true;            ///< the system's file only: the users' own lists count
    std::optional<unsigned> callSeconds;  ///< 1 to 600: the time for a call of the module

    bool operator==(const BrowserSettings& other) const = default;
};

/// The file of a scope; nullopt when neither the environment nor the system says where it is.
std::optional<std::filesystem::path> settingsFile(SettingsScope scope);
/// Empty settings when the file does not exist, or when the user has no folder for it. Throws a Failure when it cannot be read, belongs to
/// a stranger, or is malformed: an unknown key, a key twice, a wrong type, an origin that is not one.
BrowserSettings readSettings(SettingsScope scope);
/// Replaces the file at once, readable by its user (kUser) or by everybody (kSystem). Throws a Failure.
void writeSettings(SettingsScope scope, const BrowserSettings& settings);
/// Reads the settings, lets a function change them, and writes them when they are different. Another
/// process that does the same waits. Throws a Failure.
/// @return whether they were different.
bool changeSettings(SettingsScope scope, const std::function<void(BrowserSettings&)>& change);

/// The settings in a text.
/// @param problem  set when the result is nullopt: "has the unknown key \"alow\""; it follows "it" in a
///                 message.
std::optional<BrowserSettings> parseSettings(std::string_view text, SettingsScope scope,
                                             std::string& problem);
/// The text of a file. Throws a Failure when a path is not UTF-8.
std::string settingsText(const BrowserSettings& settings);

/// Whether a text is the identifier of an extension for Chromium, or for Firefox.
bool isChromiumExtension(const std::string& id);
bool isFirefoxExtension(const std::string& id);

/// Why a site may or may not use the tokens.
enum class SiteVerdict {
    kAllowedBySystem,
    kAllowedByUser,
    kDeniedBySystem,
    kDeniedByUser,
    kNotListed,
    kUsersMayNotAllow,  ///< only the user's list has it, which does not count
};

/// Both files together.
class SitePolicy {
public:
    /// Reads both files. Throws a Failure.
    static SitePolicy read();
    SitePolicy(BrowserSettings system, BrowserSettings user);

    /// Whether a site may use the tokens. A denial of either file wins.
    bool allows(const Origin& origin) const;
    SiteVerdict verdict(const Origin& origin) const;
    /// Whether an extension may start the host: ours, one of the system's file, or one of the user's
    /// unless the users' own lists do not count.
    bool knowsExtension(const std::string& id) const;
    /// The user's, otherwise the system's; empty when neither file has one.
    std::string module() const;
    std::string configuration() const;
    std::string pinentry() const;
    /// The same; 60 when neither file has one.
    unsigned callSeconds() const;

private:
    BrowserSettings m_system;
    BrowserSettings m_user;
};

}  // namespace zr::host
