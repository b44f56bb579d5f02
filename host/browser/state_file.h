// A file of the state folder, and its lock, which processes of the same user share; one
// implementation per target.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace zr::host {

/// An open file, for this user alone. Anything but a plain file, such as a link, is an error.
class StateFile {
public:
    /// Opens a file, or makes it.
    /// @return null when that fails: error says why.
    static std::unique_ptr<StateFile> open(const std::filesystem::path& path,
                                           std::error_code& error);
    ~StateFile();
    StateFile(const StateFile&) = delete;
    StateFile& operator=(const StateFile&) = delete;

    /// Locks the file against other openings of it, until destruction. The system gives the lock
    /// back when the process ends. The file can still be read and written by others.
    /// @return false when it is locked.
    bool lock();
    /// The same, and waits a few seconds for it.
    bool lockSoon();

    std::uint64_t size() const;
    /// The bytes from an offset on, at most so many; fewer at the end of the file or on an error.
    std::string read(std::uint64_t offset, std::size_t most) const;
    /// Writes bytes at an offset. After an error the file is as long as it was.
    std::error_code write(std::uint64_t offset, std::string_view bytes);
    std::error_code truncate(std::uint64_t size);

private:
    explicit StateFile(std::intptr_t handle) : m_handle(handle) {}

    std::error_code writeOnce(std::uint64_t offset, std::string_view bytes);

    std::intptr_t m_handle;
};

/// A file that is locked until destruction.
using HeldLock = StateFile;

}  // namespace zr::host
