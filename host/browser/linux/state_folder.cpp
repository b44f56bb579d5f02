// The folder for locks and the log on Linux.
#include "host/browser/state_folder.h"

#include <cerrno>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "host/system/system.h"

namespace fs = std::filesystem;

namespace zr::host {

fs::path userStateFolder() {
    // The XDG rules: a relative path counts as not set.
    std::string folder = environmentVariable("XDG_STATE_HOME").value_or("");
    if (folder.starts_with('/')) {
        return folder;
    }
    folder = environmentVariable("HOME").value_or("");
    return folder.starts_with('/') ? fs::path(folder) / ".local" / "state" : fs::path();
}

unsigned long processNumber() {
    return static_cast<unsigned long>(getpid());
}

std::error_code makeOwnFolder(const fs::path& folder) {
    const bool isThere = mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST;
    return isThere ? std::error_code() : std::error_code(errno, std::generic_category());
}

std::string folderProblem(const fs::path& folder) {
    struct stat found = {};
    if (lstat(folder.c_str(), &found) != 0) {
        return "cannot be examined";
    }
    if (!S_ISDIR(found.st_mode)) {
        return "is not a folder";
    }
    if (found.st_uid != geteuid()) {
        return "belongs to another user";
    }
    return (found.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? "can be written by other users" : "";
}

}  // namespace zr::host
