// What the settings files need of Windows.
#include "host/web/settings_access.h"

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <windows.h>

#include <aclapi.h>
// Comes first: it makes the next header define the identifier of the folder.
#include <initguid.h>
#include <knownfolders.h>
#include <objbase.h>
#include <sddl.h>
#include <shlobj.h>

#include "host/system/byte_io.h"
#include "host/system/utf8_path.h"
#include "host/web/web_places.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

std::error_code lastError() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

struct SettingsRelease {
    void operator()(void* memory) const { LocalFree(memory); }
};

/// The user of this process, as TOKEN_USER; empty when the system does not say it.
std::vector<unsigned char> ownUser() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        return {};
    }
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> user(size);
    if (!GetTokenInformation(token, TokenUser, user.data(), size, &size)) {
        user.clear();
    }
    CloseHandle(token);
    return user;
}

bool isOwnUser(PSID owner) {
    std::vector<unsigned char> user = ownUser();
    return !user.empty() && EqualSid(owner, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid);
}

bool isAdministrator(PSID owner) {
    // The account of the system's own installer has no name in the headers.
    PSID installer = nullptr;
    ConvertStringSidToSidW(L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464",
                           &installer);
    const std::unique_ptr<void, SettingsRelease> release(installer);
    return IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ||
           IsWellKnownSid(owner, WinLocalSystemSid) || (installer && EqualSid(owner, installer));
}

/// Why something of the system may be another user's: every user can make folders and files below the
/// one around ours, unless ours is there already.
std::string whyNotSystems(const fs::path& place, const std::string& name) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD result =
        GetNamedSecurityInfoW(place.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                              nullptr, nullptr, nullptr, &descriptor);
    const std::unique_ptr<void, SettingsRelease> release(descriptor);
    if (result != ERROR_SUCCESS) {
        return std::error_code(static_cast<int>(result), std::system_category()).message();
    }
    const bool isTrusted =
        owner && (isAdministrator(owner) || (webPlaces().mayUserOwnSystem && isOwnUser(owner)));
    return isTrusted ? "" : name + " belongs to a user who is not an administrator";
}

}  // namespace

fs::path systemSettingsFolder() {
    // Not the environment's, which any program can change for those that it starts.
    wchar_t* found = nullptr;
    const HRESULT result =
        SHGetKnownFolderPath(FOLDERID_ProgramData, KF_FLAG_DEFAULT, nullptr, &found);
    const fs::path folder = SUCCEEDED(result) && found ? fs::path(found) : fs::path();
    CoTaskMemFree(found);
    return folder;
}

std::string whyNotTrusted(const fs::path& file, SettingsScope scope) {
    if (scope == SettingsScope::kUser) {
        return {};
    }
    const std::string why = whyNotSystems(file, "it");
    return why.empty() ? whyNotSystems(file.parent_path(), "its folder") : why;
}

std::error_code writeOwnFile(const fs::path& file, std::string_view bytes) {
    return writeNewFile(toUtf8(file), bytes);
}

std::error_code makeSettingsPath(const fs::path& folder, bool& isNew) {
    std::error_code error;
    isNew = fs::create_directory(folder, error);
    return error;
}

std::error_code makeSettingsFolder(const fs::path& folder, SettingsScope scope) {
    std::error_code error;
    if (scope == SettingsScope::kUser) {
        fs::create_directories(folder, error);
        return error;
    }
    // Full rights for the system and administrators, users read. Nothing is inherited.
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(
            L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FRFX;;;BU)", SDDL_REVISION_1,
            &attributes.lpSecurityDescriptor, nullptr)) {
        return lastError();
    }
    const std::unique_ptr<void, SettingsRelease> release(attributes.lpSecurityDescriptor);
    fs::create_directories(folder.parent_path(), error);
    if (error || CreateDirectoryW(folder.c_str(), &attributes)) {
        return error;
    }
    if (GetLastError() != ERROR_ALREADY_EXISTS) {
        return lastError();
    }
    // Whoever made it can change its rights, and with them what is in it.
    return whyNotSystems(folder, "it").empty() ? std::error_code()
                                               : std::make_error_code(std::errc::permission_denied);
}

bool isInUse(std::error_code error) {
    return error == std::errc::permission_denied;
}

SettingsLock::SettingsLock(const fs::path& file, std::error_code& error) {
    const HANDLE handle =
        CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    m_file = reinterpret_cast<std::intptr_t>(handle);
    error = handle == INVALID_HANDLE_VALUE ? lastError() : std::error_code();
    OVERLAPPED begin = {};
    for (int waited = 0;
         !error &&
         !LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &begin);
         waited += kLockPauseMilliseconds) {
        if (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING) {
            error = lastError();
        } else if (waited >= kLockMilliseconds) {
            error = std::make_error_code(std::errc::timed_out);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(kLockPauseMilliseconds));
        }
    }
}

SettingsLock::~SettingsLock() {
    // Closing a file unlocks it.
    if (m_file != -1) {
        CloseHandle(reinterpret_cast<HANDLE>(m_file));
    }
}

}  // namespace zr::host
