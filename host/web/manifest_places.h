// Where browsers look for the manifest of a native messaging host: on Linux in a folder for each
// browser, on Windows by a key of the registry. One implementation per target.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "host/web/browser_settings.h"
#include "host/web/browsers.h"

namespace zr::host {

/// The file that we write; nullopt when the environment does not say where it is.
std::optional<std::filesystem::path> ownManifest(Browser browser, SettingsScope scope);

/// The file that the browser reads: on Linux always ownManifest, on Windows what the registry names;
/// nullopt when it names none.
/// @param error  says why the registry cannot be read; cleared otherwise.
std::optional<std::filesystem::path> usedManifest(Browser browser, SettingsScope scope,
                                                  std::error_code& error);

/// Makes the browser read ownManifest. Without an effect on Linux.
std::error_code nameManifest(Browser browser, SettingsScope scope);
/// Undoes it, with the keys that are empty then. Without an effect on Linux.
std::error_code forgetManifest(Browser browser, SettingsScope scope);

/// Where nameManifest writes, for messages; empty on Linux.
std::string manifestKey(Browser browser, SettingsScope scope);

/// How many of the folders around ownManifest belong to the browser or to us alone, so that an empty
/// one can be removed.
int ownFolders();

/// The program that a manifest names; browsers of Windows take a relative path from its folder.
std::filesystem::path programOf(const std::filesystem::path& manifest,
                                const std::filesystem::path& named);

/// zrkey-browser beside the program of this process; empty when the system does not say where that is.
std::filesystem::path defaultHostProgram();

/// Whether the name of a file is the one of zrkey-browser.
bool isHostProgramName(const std::filesystem::path& file);

}  // namespace zr::host
