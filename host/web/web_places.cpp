// Where the settings of zrkey-browser and what browsers read about it are.
#include "host/web/web_places.h"

#include <utility>

#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/web/settings_access.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

std::optional<WebPlaces>& replacement() {
    static std::optional<WebPlaces> places;
    return places;
}

/// Relative paths of the environment are not used: they would depend on the current folder.
fs::path absoluteOrEmpty(const std::string& folder) {
    const fs::path path = toPath(folder);
    return path.is_absolute() ? path : fs::path();
}

}  // namespace

WebPlaces webPlaces() {
    if (replacement()) {
        return *replacement();
    }
    return {absoluteOrEmpty(userConfigurationFolder()), systemSettingsFolder(),
            absoluteOrEmpty(environmentVariable("HOME").value_or("")), "/", "Software"};
}

void replaceWebPlaces(std::optional<WebPlaces> places) {
    replacement() = std::move(places);
}

}  // namespace zr::host
