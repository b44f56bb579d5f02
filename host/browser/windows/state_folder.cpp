// The folder for locks and the log on Windows.
#include "host/browser/state_folder.h"

#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

struct LocalDeleter {
    void operator()(void* memory) const { LocalFree(memory); }
};
template <class T>
using LocalMemory = std::unique_ptr<T, LocalDeleter>;

std::error_code windowsError(DWORD error) {
    return {static_cast<int>(error), std::system_category()};
}

/// The user of this process, as a TOKEN_USER; empty when the system does not say who it is.
std::vector<BYTE> currentUser() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        return {};
    }
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<BYTE> user(size);
    const BOOL isRead = GetTokenInformation(token, TokenUser, user.data(), size, &size);
    CloseHandle(token);
    if (!isRead) {
        user.clear();
    }
    // Never a copy: it would contain a pointer into the bytes that it was copied from.
    return user;
}

PSID sidOf(std::vector<BYTE>& user) {
    return reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
}

/// Whether somebody may do what this user may: the user, the system and the administrators, who may
/// do everything anyway.
bool isTrusted(PSID who, PSID user) {
    return EqualSid(who, user) || IsWellKnownSid(who, WinLocalSystemSid) ||
           IsWellKnownSid(who, WinBuiltinAdministratorsSid) ||
           IsWellKnownSid(who, WinCreatorOwnerSid) || IsWellKnownSid(who, WinCreatorOwnerRightsSid);
}

bool letsOthersWrite(PACL list, PSID user) {
    constexpr DWORD kWriting = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE |
                               WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!GetAce(list, i, &entry)) {
            return true;
        }
        const auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        if (allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE && (allowed->Mask & kWriting) != 0 &&
            !isTrusted(const_cast<DWORD*>(&allowed->SidStart), user)) {
            return true;
        }
    }
    return false;
}

}  // namespace

fs::path userStateFolder() {
    // A relative path would depend on the folder in which the browser starts this process.
    fs::path folder = toPath(environmentVariable("LOCALAPPDATA").value_or(""));
    return folder.is_absolute() ? folder : fs::path();
}

unsigned long processNumber() {
    return GetCurrentProcessId();
}

std::error_code makeOwnFolder(const fs::path& folder) {
    std::vector<BYTE> user = currentUser();
    wchar_t* text = nullptr;
    if (user.empty() || !ConvertSidToStringSidW(sidOf(user), &text)) {
        return windowsError(GetLastError());
    }
    const LocalMemory<wchar_t> sid(text);
    // Full access for the user and the system, inherited by what is in the folder; nothing is
    // inherited from above.
    const std::wstring rules =
        std::wstring(L"D:P(A;OICI;FA;;;").append(text).append(L")(A;OICI;FA;;;SY)");
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(rules.c_str(), SDDL_REVISION_1,
                                                              &descriptor, nullptr)) {
        return windowsError(GetLastError());
    }
    const LocalMemory<void> release(descriptor);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor, FALSE};
    const bool isThere =
        CreateDirectoryW(folder.c_str(), &attributes) || GetLastError() == ERROR_ALREADY_EXISTS;
    return isThere ? std::error_code() : windowsError(GetLastError());
}

std::string folderProblem(const fs::path& folder) {
    const DWORD kind = GetFileAttributesW(folder.c_str());
    if (kind == INVALID_FILE_ATTRIBUTES) {
        return "cannot be examined";
    }
    if ((kind & FILE_ATTRIBUTE_DIRECTORY) == 0 || (kind & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return "is not a folder";
    }
    std::vector<BYTE> user = currentUser();
    std::wstring name = folder.wstring();
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (user.empty() ||
        GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT,
                              OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                              nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS) {
        return "cannot be examined";
    }
    const LocalMemory<void> release(descriptor);
    if (!owner || !isTrusted(owner, sidOf(user))) {
        return "belongs to another user";
    }
    // A folder without a list is open to everybody.
    return !list || letsOthersWrite(list, sidOf(user)) ? "can be written by other users" : "";
}

}  // namespace zr::host
