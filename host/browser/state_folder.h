// The folder in which the native messaging hosts of a user keep their locks and their log.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace zr::host {

/// The folder, which is made when it does not exist: zrkey/browser in $XDG_STATE_HOME or
/// ~/.local/state, zrkey\browser in %LOCALAPPDATA%. Throws a Failure when it cannot be made, or when
/// another user could put files there.
std::filesystem::path browserStateFolder();

/// Makes a folder that only this user can use; one that exists stays as it is.
std::error_code makeOwnFolder(const std::filesystem::path& folder);
/// What is wrong with a folder: "is not a folder", "belongs to another user", ...; empty when it can
/// be trusted. A link to a folder is not a folder.
std::string folderProblem(const std::filesystem::path& folder);
/// Where programs of this user keep their state; empty when the environment does not say it.
std::filesystem::path userStateFolder();
/// The number of this process.
unsigned long processNumber();

}  // namespace zr::host
