// The identifiers of our extension: those that zrkey-browser may be started by, and that the manifests
// name.
#pragma once

#include <string>
#include <vector>

namespace zr::host {

/// Those for Chromium and the browsers made from it, and those for Firefox.
std::vector<std::string> ownExtensions();

}  // namespace zr::host
