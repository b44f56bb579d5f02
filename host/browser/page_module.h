// The provider of a connection, with the module that browser.json names.
#pragma once

#include <memory>

#include "host/objects/provider_object.h"
#include "host/web/browser_settings.h"

namespace zr::host {

/// Loads the module with the configuration of the policy, otherwise with the built-in one. Throws a
/// PageError.
std::shared_ptr<ProviderObject> loadPageModule(const SitePolicy& policy);

}  // namespace zr::host
