// A file of the state folder on Windows.
#include "host/browser/state_file.h"

#include <windows.h>

namespace zr::host {
namespace {

std::error_code lastError() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

HANDLE handleOf(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

OVERLAPPED placeAt(std::uint64_t offset) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

/// A lock keeps others from reading and writing what it covers, so it covers a byte that no file has.
constexpr std::uint64_t kLockedByte = std::uint64_t{1} << 40;

}  // namespace

std::unique_ptr<StateFile> StateFile::open(const std::filesystem::path& path,
                                           std::error_code& error) {
    const HANDLE handle =
        CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        error = lastError();
        return nullptr;
    }
    std::unique_ptr<StateFile> file(new StateFile(reinterpret_cast<std::intptr_t>(handle)));
    BY_HANDLE_FILE_INFORMATION found = {};
    constexpr DWORD kNotPlain = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
    if (GetFileType(handle) != FILE_TYPE_DISK || !GetFileInformationByHandle(handle, &found) ||
        (found.dwFileAttributes & kNotPlain) != 0) {
        error = std::make_error_code(std::errc::not_supported);
        return nullptr;
    }
    error.clear();
    return file;
}

StateFile::~StateFile() {
    CloseHandle(handleOf(m_handle));
}

bool StateFile::lock() {
    OVERLAPPED place = placeAt(kLockedByte);
    return LockFileEx(handleOf(m_handle), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1,
                      0, &place);
}

std::uint64_t StateFile::size() const {
    LARGE_INTEGER size = {};
    return GetFileSizeEx(handleOf(m_handle), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

std::string StateFile::read(std::uint64_t offset, std::size_t most) const {
    std::string bytes(most, '\0');
    OVERLAPPED place = placeAt(offset);
    DWORD count = 0;
    if (!ReadFile(handleOf(m_handle), bytes.data(), static_cast<DWORD>(most), &count, &place)) {
        count = 0;
    }
    bytes.resize(count);
    return bytes;
}

std::error_code StateFile::writeOnce(std::uint64_t offset, std::string_view bytes) {
    OVERLAPPED place = placeAt(offset);
    DWORD count = 0;
    if (!WriteFile(handleOf(m_handle), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                   &place)) {
        return lastError();
    }
    return count == bytes.size() ? std::error_code()
                                 : std::make_error_code(std::errc::no_space_on_device);
}

std::error_code StateFile::truncate(std::uint64_t size) {
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(size);
    return SetFilePointerEx(handleOf(m_handle), end, nullptr, FILE_BEGIN) &&
                   SetEndOfFile(handleOf(m_handle))
               ? std::error_code()
               : lastError();
}

}  // namespace zr::host
