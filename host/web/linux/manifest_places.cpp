// Where browsers look for the manifest of a native messaging host on Linux.
#include "host/web/manifest_places.h"

#include "host/web/host_names.h"
#include "host/web/web_places.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

struct Folders {
    const char* user;  ///< in the folder of configurations, for Firefox in the home folder
    const char* system;
};

constexpr Folders foldersOf(Browser browser) {
    switch (browser) {
        case Browser::kChromium:
            return {"chromium/NativeMessagingHosts", "etc/chromium/native-messaging-hosts"};
        case Browser::kChrome:
            return {"google-chrome/NativeMessagingHosts", "etc/opt/chrome/native-messaging-hosts"};
        case Browser::kEdge:
            return {"microsoft-edge/NativeMessagingHosts", "etc/opt/edge/native-messaging-hosts"};
        default:
            return {".mozilla/native-messaging-hosts", "usr/lib/mozilla/native-messaging-hosts"};
    }
}

}  // namespace

std::optional<fs::path> ownManifest(Browser browser, SettingsScope scope) {
    const WebPlaces places = webPlaces();
    const Folders folders = foldersOf(browser);
    const std::string name = std::string(kBrowserHostName).append(".json");
    if (scope == SettingsScope::kSystem) {
        return places.root / folders.system / name;
    }
    const fs::path& root = browser == Browser::kFirefox ? places.home : places.userConfiguration;
    return root.empty() ? std::nullopt : std::optional(root / folders.user / name);
}

std::optional<fs::path> usedManifest(Browser browser, SettingsScope scope, std::error_code& error) {
    error.clear();
    return ownManifest(browser, scope);
}

std::error_code nameManifest(Browser, SettingsScope) {
    return {};
}

std::error_code forgetManifest(Browser, SettingsScope) {
    return {};
}

std::string manifestKey(Browser, SettingsScope) {
    return {};
}

int ownFolders() {
    return 2;
}

fs::path programOf(const fs::path&, const fs::path& named) {
    return named;
}

fs::path defaultHostProgram() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path() : program.parent_path() / kBrowserHostProgram;
}

bool isHostProgramName(const fs::path& file) {
    return file.filename() == kBrowserHostProgram;
}

}  // namespace zr::host
