// What the settings files need of the operating system; one implementation per target.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "host/web/browser_settings.h"

namespace zr::host {

/// The folder of the system's configurations. Empty when the system does not say where it is.
std::filesystem::path systemSettingsFolder();

/// Why a settings file may have been written by another user: it or its folder belongs to another user,
/// or others can write it or its folder. Empty when it may be used.
std::string whyNotTrusted(const std::filesystem::path& file, SettingsScope scope);

/// Creates the folder of a settings file if it does not exist. On Windows the system folder is created so
/// that only administrators can write to it, although its parent folder lets every user write. A folder
/// that another user created is refused with permission_denied.
std::error_code makeSettingsFolder(const std::filesystem::path& folder, SettingsScope scope);

/// Makes a file with these bytes, and a folder. On Linux others cannot use them from the beginning,
/// whatever this process makes by default; on Windows they have the rights of the folder around them.
/// The file must not exist.
std::error_code writeOwnFile(const std::filesystem::path& file, std::string_view bytes);
/// @param isNew  whether the folder did not exist.
std::error_code makeSettingsPath(const std::filesystem::path& folder, bool& isNew);

/// Whether an error may mean that another process has the file open, which Windows neither replaces nor
/// opens then. Never on Linux.
bool isInUse(std::error_code error);

/// Keeps other processes that want the same lock waiting until destruction.
class SettingsLock {
public:
    /// @param file   made when it does not exist, and never removed.
    /// @param error  says why there is no lock: timed_out when another process has it for long;
    ///               cleared otherwise.
    SettingsLock(const std::filesystem::path& file, std::error_code& error);
    ~SettingsLock();
    SettingsLock(const SettingsLock&) = delete;
    SettingsLock& operator=(const SettingsLock&) = delete;

private:
    std::intptr_t m_file;  ///< a descriptor or a handle; -1: none
};

/// How long a SettingsLock waits.
inline constexpr int kLockMilliseconds = 10000;
inline constexpr int kLockPauseMilliseconds = 20;

}  // namespace zr::host
