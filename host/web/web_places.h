// Where the settings of zrkey-browser and what browsers read about it are.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace zr::host {

struct WebPlaces {
    /// The folders of all programs' configurations; empty when nothing names them.
    std::filesystem::path userConfiguration;
    std::filesystem::path systemConfiguration;
    std::filesystem::path
        home;  ///< used on Linux only; empty when the environment does not name it
    std::filesystem::path root;  ///< of the system's files; used on Linux only
    /// The key below HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE; used on Windows only.
    std::string registryKey;
    /// Whether the system's files may belong to the user of this process, as those of tests do. Used on
    /// Windows only.
    bool mayUserOwnSystem = false;
};

/// Those of the system, or what replaced them.
WebPlaces webPlaces();
/// For tests.
/// @param places  nullopt: those of the system again.
void replaceWebPlaces(std::optional<WebPlaces> places);

}  // namespace zr::host
