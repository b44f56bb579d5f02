// The current folder.
#include "host/token/paths.h"

#include <system_error>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

Failure noCurrentFolder(std::error_code error) {
    return systemFailure(kExitModule, "find the current folder", error,
                         "change to another folder, or give --module and --workdir as full paths");
}

}  // namespace

fs::path currentFolder() {
    std::error_code error;
    fs::path folder = fs::current_path(error);
    if (error) {
        throw noCurrentFolder(error);
    }
    return folder;
}

fs::path absolutePath(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error) {
        throw noCurrentFolder(error);
    }
    return absolute;
}

FolderChange::FolderChange(const std::string& folder) {
    std::error_code error;
    // The current folder may not exist any more; there is no way back to it then.
    m_before = fs::current_path(error);
    error.clear();
    if (!folder.empty()) {
        fs::current_path(toPath(folder), error);
    }
    if (error) {
        throw systemFailure(kExitModule, "change to the folder " + inQuotes(folder), error,
                            "check --workdir, the folder that contains config.xml");
    }
}

FolderChange::~FolderChange() {
    std::error_code ignored;
    fs::current_path(m_before, ignored);
}

}  // namespace zr::host
