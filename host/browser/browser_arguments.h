// The arguments with which browsers start the host.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zr::host {

/// The extension for which a browser starts the host: the identifier in Chromium's origin
/// "chrome-extension://ID/", beside which "--parent-window=NUMBER" may stand, or Firefox's second
/// argument, after the path of the manifest.
/// @return nullopt for all other arguments.
std::optional<std::string> extensionOf(const std::vector<std::string>& arguments);

}  // namespace zr::host
