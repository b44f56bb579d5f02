// The files browser.json: reading and replacing them.
#include "host/web/browser_settings.h"

#include <chrono>
#include <system_error>
#include <thread>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/utf8_path.h"
#include "host/web/settings_access.h"
#include "host/web/web_places.h"
#include "host/web/whole_file.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kFolderName = "zrkey";
constexpr const char* kFileName = "browser.json";
constexpr const char* kLockName = ".browser.json.lock";
constexpr std::size_t kMostBytes = 1 << 20;

/// Waits up to half a second for a writer of the file.
ErasedBytes readSettled(const fs::path& file, std::error_code& error) {
    constexpr int kTries = 50;
    constexpr auto kPause = std::chrono::milliseconds(10);
    for (int i = 0;; ++i) {
        InputFile input(toUtf8(file), error);
        if (!error) {
            return readAll(input, kMostBytes, error);
        }
        if (i == kTries || !isInUse(error)) {
            return {};
        }
        std::this_thread::sleep_for(kPause);
    }
}

BrowserSettings readFile(const fs::path& file, SettingsScope scope) {
    const std::string asked = "read the settings " + inQuotes(toUtf8(file));
    std::error_code error;
    const fs::file_type type = fs::status(file, error).type();
    if (type == fs::file_type::not_found) {
        return {};
    }
    if (!error && type != fs::file_type::regular) {
        throw commandFailure(kExitModule, asked, "it is not a regular file", "remove it");
    }
    if (error) {
        throw systemFailure(kExitModule, asked, error, "check its permissions");
    }
    if (const std::string why = whyNotTrusted(file, scope); !why.empty()) {
        throw commandFailure(kExitModule, asked, why,
                             "check what it says, its owner and permissions");
    }
    const ErasedBytes bytes = readSettled(file, error);
    if (error) {
        throw systemFailure(kExitModule, asked, error, "check its permissions and its size");
    }
    std::string problem;
    std::optional<BrowserSettings> settings = parseSettings(viewOf(bytes), scope, problem);
    if (!settings) {
        throw commandFailure(kExitModule, asked, "it " + problem, "correct the file");
    }
    return std::move(*settings);
}

/// The administrator's file may deny sites: it is not left out.
Failure noSystemFolder(std::string asked) {
    return commandFailure(kExitModule, std::move(asked),
                          "the system does not say where the administrator's settings are",
                          "repair the known folder ProgramData of Windows");
}

/// The file of a scope, and its folder made. Throws a Failure.
fs::path preparedFile(SettingsScope scope) {
    const std::optional<fs::path> file = settingsFile(scope);
    if (!file && scope == SettingsScope::kSystem) {
        throw noSystemFolder("write browser.json");
    }
    if (!file) {
        throw commandFailure(kExitFailure, "write browser.json",
                             "the environment names no folder for it",
                             "set HOME or XDG_CONFIG_HOME, on Windows APPDATA");
    }
    if (const std::error_code error = makeSettingsFolder(file->parent_path(), scope)) {
        throw systemFailure(kExitFailure,
                            "make the folder " + inQuotes(toUtf8(file->parent_path())), error,
                            "check the permissions; --system needs those of an administrator");
    }
    return *file;
}

void replaceFile(const fs::path& file, SettingsScope scope, const std::string& text) {
    const std::error_code error = replaceWholeFile(
        file, text, scope == SettingsScope::kUser ? FileReaders::kOwner : FileReaders::kEverybody);
    if (error) {
        throw systemFailure(
            kExitFailure, "write the settings " + inQuotes(toUtf8(file)), error,
            "check free space and permissions; --system needs those of an administrator");
    }
}

}  // namespace

std::optional<fs::path> settingsFile(SettingsScope scope) {
    const WebPlaces places = webPlaces();
    const fs::path& folder =
        scope == SettingsScope::kUser ? places.userConfiguration : places.systemConfiguration;
    return folder.empty() ? std::nullopt : std::optional(folder / kFolderName / kFileName);
}

BrowserSettings readSettings(SettingsScope scope) {
    const std::optional<fs::path> file = settingsFile(scope);
    if (!file && scope == SettingsScope::kSystem) {
        throw noSystemFolder("read the administrator's settings");
    }
    return file ? readFile(*file, scope) : BrowserSettings();
}

void writeSettings(SettingsScope scope, const BrowserSettings& settings) {
    const std::string text = settingsText(settings);
    replaceFile(preparedFile(scope), scope, text);
}

bool changeSettings(SettingsScope scope, const std::function<void(BrowserSettings&)>& change) {
    const fs::path file = preparedFile(scope);
    std::error_code error;
    const SettingsLock lock(file.parent_path() / kLockName, error);
    if (error) {
        throw systemFailure(kExitFailure, "change the settings " + inQuotes(toUtf8(file)), error,
                            "check the permissions, and whether another command changes them; "
                            "--system needs the rights of an administrator");
    }
    const BrowserSettings before = readFile(file, scope);
    BrowserSettings after = before;
    change(after);
    const bool isDifferent = !(after == before);
    if (isDifferent) {
        replaceFile(file, scope, settingsText(after));
    }
    return isDifferent;
}

}  // namespace zr::host
