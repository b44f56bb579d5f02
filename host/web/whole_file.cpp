// Files that are replaced at once.
#include "host/web/whole_file.h"

#include <chrono>
#include <thread>

#include "host/web/settings_access.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// Waits up to a second for readers of the target.
std::error_code renameOver(const fs::path& fresh, const fs::path& target) {
    constexpr int kTries = 100;
    constexpr auto kPause = std::chrono::milliseconds(10);
    std::error_code error;
    fs::rename(fresh, target, error);
    for (int i = 0; i < kTries && error && isInUse(error); ++i) {
        std::this_thread::sleep_for(kPause);
        fs::rename(fresh, target, error);
    }
    return error;
}

}  // namespace

std::error_code replaceWholeFile(const fs::path& file, std::string_view bytes,
                                 FileReaders readers) {
    std::error_code error;
    const fs::path linked = fs::is_symlink(file, error) ? fs::canonical(file, error) : file;
    const fs::path target = error ? file : linked;
    // A name of our own: what an earlier process left there is removed.
    const fs::path fresh = target.parent_path() / (u8"." + target.filename().u8string() + u8".new");
    fs::remove(fresh, error);
    error = writeOwnFile(fresh, bytes);
    if (!error) {
        using Rights = fs::perms;
        const Rights others = readers == FileReaders::kEverybody
                                  ? Rights::group_read | Rights::others_read
                                  : Rights::none;
        fs::permissions(fresh, Rights::owner_read | Rights::owner_write | others, error);
    }
    if (!error) {
        error = renameOver(fresh, target);
    }
    if (error) {
        std::error_code ignored;
        fs::remove(fresh, ignored);
    }
    return error;
}

std::error_code makeFolders(const fs::path& folder, FileReaders readers) {
    std::error_code error;
    if (fs::is_directory(folder, error)) {
        return {};
    }
    if (folder.has_relative_path()) {
        error = makeFolders(folder.parent_path(), readers);
    }
    bool isNew = false;
    if (!error) {
        error = makeSettingsPath(folder, isNew);
    }
    if (!error && isNew && readers == FileReaders::kEverybody) {
        constexpr auto kReadable = static_cast<fs::perms>(0755);
        fs::permissions(folder, kReadable, error);
    }
    return error;
}

}  // namespace zr::host
