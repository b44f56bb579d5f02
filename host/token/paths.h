// The current folder.
#pragma once

#include <filesystem>
#include <string>

namespace zr::host {

/// Throws a Failure when the current folder does not exist any more.
std::filesystem::path currentFolder();
/// Throws a Failure when the path is relative and the current folder does not exist any more.
std::filesystem::path absolutePath(const std::filesystem::path& path);

/// Makes a folder the current one until destruction.
class FolderChange {
public:
    /// Throws a Failure when there is no such folder.
    /// @param folder  empty: the current folder stays.
    explicit FolderChange(const std::string& folder);
    ~FolderChange();
    FolderChange(const FolderChange&) = delete;
    FolderChange& operator=(const FolderChange&) = delete;

private:
    std::filesystem::path m_before;
};

}  // namespace zr::host
