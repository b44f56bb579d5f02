// Files that are replaced at once: who reads one sees the old bytes or the new ones.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace zr::host {

enum class FileReaders { kOwner, kEverybody };

/// Makes bytes the content of a file, which only its owner can write. A link stays, and what it leads
/// to is replaced.
std::error_code replaceWholeFile(const std::filesystem::path& file, std::string_view bytes,
                                 FileReaders readers);

/// Makes a folder and those around it, unless they are there. Folders that everybody reads are so
/// whatever this process makes by default.
std::error_code makeFolders(const std::filesystem::path& folder, FileReaders readers);

}  // namespace zr::host
