// What the settings files need of Linux.
#include "host/web/settings_access.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/system/system.h"
#include "host/web/whole_file.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::string whyNotOurs(const fs::path& place, const std::string& name) {
    struct stat facts = {};
    if (stat(place.c_str(), &facts) != 0) {
        return lastError().message();
    }
    if (facts.st_uid != 0 && facts.st_uid != geteuid()) {
        return name + " belongs to another user";
    }
    // In a folder such as /tmp nobody can replace the files of others.
    const bool isShared = S_ISDIR(facts.st_mode) && (facts.st_mode & S_ISVTX) != 0;
    return (facts.st_mode & S_IWOTH) != 0 && !isShared ? "every user can write " + name : "";
}

}  // namespace

fs::path systemSettingsFolder() {
    return systemConfigurationFolder();
}

std::string whyNotTrusted(const fs::path& file, SettingsScope) {
    std::string why = whyNotOurs(file, "it");
    if (!why.empty()) {
        return why;
    }
    // Who can write a folder can put another file there.
    std::error_code error;
    const fs::path linked = fs::canonical(file, error);
    const std::string whyFolder = whyNotOurs(file.parent_path(), "its folder");
    return error || !whyFolder.empty() ? whyFolder : whyNotOurs(linked.parent_path(), "its folder");
}

std::error_code writeOwnFile(const fs::path& file, std::string_view bytes) {
    const int descriptor =
        open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        return lastError();
    }
    const std::error_code writing = writeAll(descriptor, bytes);
    const std::error_code closing = closeDescriptor(descriptor);
    return writing ? writing : closing;
}

std::error_code makeSettingsPath(const fs::path& folder, bool& isNew) {
    isNew = mkdir(folder.c_str(), S_IRWXU) == 0;
    std::error_code error = isNew ? std::error_code() : lastError();
    std::error_code ignored;
    return error == std::errc::file_exists && fs::is_directory(folder, ignored) ? std::error_code()
                                                                                : error;
}

std::error_code makeSettingsFolder(const fs::path& folder, SettingsScope scope) {
    return makeFolders(
        folder, scope == SettingsScope::kUser ? FileReaders::kOwner : FileReaders::kEverybody);
}

bool isInUse(std::error_code) {
    return false;
}

SettingsLock::SettingsLock(const fs::path& file, std::error_code& error) {
    // Only its owner can open it: others cannot keep it locked.
    m_file = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    error = m_file < 0 ? lastError() : std::error_code();
    for (int waited = 0; !error && flock(static_cast<int>(m_file), LOCK_EX | LOCK_NB) != 0;
         waited += kLockPauseMilliseconds) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            error = lastError();
        } else if (waited >= kLockMilliseconds) {
            error = std::make_error_code(std::errc::timed_out);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(kLockPauseMilliseconds));
        }
    }
}

SettingsLock::~SettingsLock() {
    if (m_file >= 0) {
        close(static_cast<int>(m_file));
    }
}

}  // namespace zr::host
