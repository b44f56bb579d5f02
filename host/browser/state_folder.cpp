// The folder in which the native messaging hosts of a user keep their locks and their log.
#include "host/browser/state_folder.h"

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

Failure unusable(const fs::path& folder, std::string cause) {
    return commandFailure(kExitFailure, "use the folder " + inQuotes(toUtf8(folder)),
                          std::move(cause), "correct its owner and its permissions, or remove it");
}

/// Makes the folder of all programs' state for this user alone, and those around it, unless they are
/// there. What fails is noticed by the folder that is made in it.
void makeBase(const fs::path& base) {
    std::error_code error;
    if (!base.has_relative_path() || fs::exists(base, error)) {
        return;
    }
    makeBase(base.parent_path());
    makeOwnFolder(base);
}

}  // namespace

fs::path browserStateFolder() {
    const fs::path base = userStateFolder();
    if (base.empty()) {
        throw commandFailure(kExitFailure, "find the folder for locks and the log",
                             "the environment does not name the home folder",
                             "set HOME, or LOCALAPPDATA on Windows");
    }
    makeBase(base);
    fs::path folder = base;
    for (const char* name : {"zrkey", "browser"}) {
        folder /= name;
        if (const std::error_code error = makeOwnFolder(folder)) {
            throw unusable(folder, error.message());
        }
        std::string problem = folderProblem(folder);
        if (!problem.empty()) {
            throw unusable(folder, "it " + problem);
        }
    }
    return folder;
}

}  // namespace zr::host
