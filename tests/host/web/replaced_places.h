// Folders and a registry key of a test's own, instead of those of the machine, for what is in host/web.
#pragma once

#include <filesystem>
#include <string>

#include "host/web/web_places.h"

namespace zr::test {

/// Removes a key with all in it below HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE. Without an effect on
/// Linux.
void removeRegistryKey(const std::string& key);

/// Replaces the places until destruction.
class WebPlacesReplacement {
public:
    explicit WebPlacesReplacement(const std::filesystem::path& root)
        : places{root / "user", root / "system", root / "home", root, "Software\\ZRKey test"} {
        places.mayUserOwnSystem = true;
        removeRegistryKey(places.registryKey);
        use();
    }
    ~WebPlacesReplacement() {
        removeRegistryKey("Software\\ZRKey test");
        host::replaceWebPlaces(std::nullopt);
    }
    WebPlacesReplacement(const WebPlacesReplacement&) = delete;
    WebPlacesReplacement& operator=(const WebPlacesReplacement&) = delete;

    /// After a change of the places.
    void use() const { host::replaceWebPlaces(places); }

    host::WebPlaces places;
};

}  // namespace zr::test
