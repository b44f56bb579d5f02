// zrkey-browser made known to browsers.
#include "host/web/host_registration.h"

#include <algorithm>
#include <system_error>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/utf8_path.h"
#include "host/web/extension_ids.h"
#include "host/web/settings_access.h"
#include "host/web/whole_file.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kRightsAdvice =
    "check free space and permissions; --system needs those of an administrator";

void addNew(std::vector<std::string>& list, const std::vector<std::string>& more) {
    for (const std::string& entry : more) {
        if (std::find(list.begin(), list.end(), entry) == list.end()) {
            list.push_back(entry);
        }
    }
}

std::string forBrowser(const char* verb, Browser browser) {
    return std::string(verb).append(" zrkey-browser for ").append(nameOf(browser));
}

/// A file that exists, or is not there.
ManifestReport examineFile(Browser browser, const fs::path& file, const HostManifest& expected) {
    constexpr std::size_t kMostBytes = 1 << 16;
    std::error_code error;
    const fs::file_type type = fs::status(file, error).type();
    if (type == fs::file_type::not_found) {
        return {ManifestState::kMissing};
    }
    if (!error && type != fs::file_type::regular) {
        return {ManifestState::kForeign, "is not a regular file"};
    }
    if (!error) {
        InputFile input(toUtf8(file), error);
        const ErasedBytes bytes = error ? ErasedBytes() : readAll(input, kMostBytes, error);
        if (!error) {
            return judgeManifest(browser, viewOf(bytes), file, expected);
        }
    }
    return {ManifestState::kForeign, "cannot be read: " + error.message()};
}

void refuseForeign(const std::string& asked, const fs::path& file, const ManifestReport& report) {
    if (report.state == ManifestState::kForeign) {
        throw commandFailure(kExitFailure, asked,
                             std::string("the manifest ")
                                 .append(inQuotes(toUtf8(file)))
                                 .append(" belongs to another program: it ")
                                 .append(report.problem),
                             "look at it, and give --force if nobody needs it");
    }
}

/// The file that we write. Throws a Failure.
fs::path requireManifest(const std::string& asked, Browser browser, SettingsScope scope) {
    const std::optional<fs::path> file = ownManifest(browser, scope);
    if (!file) {
        throw commandFailure(kExitFailure, asked,
                             "the environment names no folder for the manifest",
                             "set HOME, on Windows APPDATA");
    }
    return *file;
}

std::error_code makeFolder(const fs::path& file, SettingsScope scope) {
    // On Windows it is the folder of the settings.
    const std::optional<fs::path> settings = settingsFile(scope);
    if (settings && settings->parent_path() == file.parent_path()) {
        return makeSettingsFolder(file.parent_path(), scope);
    }
    return makeFolders(file.parent_path(), scope == SettingsScope::kUser ? FileReaders::kOwner
                                                                         : FileReaders::kEverybody);
}

}  // namespace

HostManifest expectedManifest(SettingsScope scope, const fs::path& program) {
    HostManifest manifest = {program, ownExtensions()};
    const BrowserSettings system = readSettings(SettingsScope::kSystem);
    addNew(manifest.extensions, system.extensions);
    if (scope == SettingsScope::kUser && system.usersMayAllow) {
        addNew(manifest.extensions, readSettings(scope).extensions);
    }
    return manifest;
}

HostRegistration examineRegistration(Browser browser, SettingsScope scope,
                                     const HostManifest& expected) {
    HostRegistration found = {browser, scope};
    std::error_code error;
    const std::optional<fs::path> used = usedManifest(browser, scope, error);
    if (error) {
        found.report = {
            ManifestState::kForeign,
            "is not named by a text in " + manifestKey(browser, scope) + ": " + error.message()};
    } else if (used) {
        found.file = *used;
        found.report = examineFile(browser, *used, expected);
    }
    const bool isNamed = used && !manifestKey(browser, scope).empty();
    if (isNamed && found.report.state == ManifestState::kMissing) {
        found.report = {ManifestState::kBroken,
                        "does not exist, but is named by " + manifestKey(browser, scope)};
    }
    return found;
}

HostRegistration installHost(Browser browser, SettingsScope scope, const HostManifest& manifest,
                             bool isForced) {
    const std::string asked = forBrowser("install", browser);
    const fs::path file = requireManifest(asked, browser, scope);
    HostRegistration before = examineRegistration(browser, scope, manifest);
    if (!isForced) {
        refuseForeign(asked, before.file, before.report);
        refuseForeign(asked, file, examineFile(browser, file, manifest));
    }
    const std::string text = manifestText(browser, manifest);
    std::error_code error = makeFolder(file, scope);
    if (!error) {
        error = replaceWholeFile(file, text, FileReaders::kEverybody);
    }
    if (error) {
        throw systemFailure(kExitFailure, asked + ": write " + inQuotes(toUtf8(file)), error,
                            kRightsAdvice);
    }
    error = nameManifest(browser, scope);
    if (error) {
        throw systemFailure(kExitFailure, asked + ": write " + manifestKey(browser, scope), error,
                            kRightsAdvice);
    }
    return before;
}

HostRegistration uninstallHost(Browser browser, SettingsScope scope, const HostManifest& manifest,
                               bool isForced) {
    const std::string asked = forBrowser("uninstall", browser);
    const fs::path file = requireManifest(asked, browser, scope);
    HostRegistration before = examineRegistration(browser, scope, manifest);
    const ManifestReport own = examineFile(browser, file, manifest);
    if (!isForced) {
        refuseForeign(asked, before.file, before.report);
        refuseForeign(asked, file, own);
    }
    // First what names the manifest: a browser never finds a name without its file.
    std::error_code error = forgetManifest(browser, scope);
    if (error) {
        throw systemFailure(kExitFailure, asked + ": remove " + manifestKey(browser, scope), error,
                            kRightsAdvice);
    }
    // A manifest elsewhere, which only the registry names, belongs to a package.
    if (own.state != ManifestState::kMissing) {
        fs::remove(file, error);
        if (error) {
            throw systemFailure(kExitFailure, asked + ": remove " + inQuotes(toUtf8(file)), error,
                                kRightsAdvice);
        }
    }
    fs::path folder = file.parent_path();
    for (int i = 0; i < ownFolders() && !error; ++i, folder = folder.parent_path()) {
        // Fails, as it should, when others use it.
        fs::remove(folder, error);
    }
    return before;
}

}  // namespace zr::host
