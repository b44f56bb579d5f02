// zrkey-browser made known to browsers: manifests, and on Windows the registry.
#pragma once

#include <filesystem>
#include <string>

#include "host/web/host_manifest.h"
#include "host/web/manifest_places.h"

namespace zr::host {

struct HostRegistration {
    Browser browser;
    SettingsScope scope;
    /// The manifest that the browser reads, or where it would be; empty when nothing says it.
    std::filesystem::path file = {};
    ManifestReport report = {};
};

/// What a manifest of a scope is to say, with the extensions in browser.json. Throws a Failure.
HostManifest expectedManifest(SettingsScope scope, const std::filesystem::path& program);

HostRegistration examineRegistration(Browser browser, SettingsScope scope,
                                     const HostManifest& expected);

/// Writes the manifest and names it. Throws a Failure.
/// @param isForced  replaces also what belongs to another program.
/// @return the registration before.
HostRegistration installHost(Browser browser, SettingsScope scope, const HostManifest& manifest,
                             bool isForced);

/// Removes the manifest and what installHost made around it. Throws a Failure.
/// @param isForced  removes also what belongs to another program.
/// @return the registration before.
HostRegistration uninstallHost(Browser browser, SettingsScope scope, const HostManifest& manifest,
                               bool isForced);

}  // namespace zr::host
