// The command's system services on Windows.
#include "host/system/system.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cwchar>
#include <filesystem>
#include <memory>

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <sys/stat.h>

#include "host/system/erasing_allocator.h"

namespace zr::host {
namespace {

std::wstring toWide(const std::string& text) {
    const auto size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
    return wide;
}

std::string toUtf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    bytes.pop_back();
    return bytes;
}

struct EnvironmentRelease {
    void operator()(wchar_t* block) const { FreeEnvironmentStringsW(block); }
};

std::error_code lastError() {
    return {errno, std::generic_category()};
}

int openFile(const std::string& path, int flags, std::error_code& error) {
    const int descriptor =
        _wopen(toWide(path).c_str(), flags | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    error = descriptor < 0 ? lastError() : std::error_code();
    return descriptor;
}

}  // namespace

std::vector<std::string> commandLineArguments(int argc, char** argv) {
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!wide) {
        return {argv + std::min(argc, 1), argv + argc};
    }
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(toUtf8(wide[i]));
    }
    LocalFree(wide);
    return arguments;
}

std::optional<std::string> environmentVariable(const std::string& name) {
    const std::wstring wideName = toWide(name);
    const DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (size == 0) {
        return std::nullopt;
    }
    std::wstring value(size, L'\0');
    GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
    std::string utf8 = toUtf8(value.c_str());
    // The value may be a PIN.
    secureErase(value.data(), value.size() * sizeof(wchar_t));
    return utf8;
}

std::string userConfigurationFolder() {
    return environmentVariable("APPDATA").value_or("");
}

std::string systemConfigurationFolder() {
    return environmentVariable("PROGRAMDATA").value_or("");
}

std::string makePrivateFolder(std::error_code& error) {
    constexpr int kMostTries = 1000;
    wchar_t folder[MAX_PATH + 1];
    if (GetTempPathW(MAX_PATH, folder) == 0) {
        error = {static_cast<int>(GetLastError()), std::system_category()};
        return {};
    }
    // The user's folder for temporary files, which others cannot read; its entries inherit that.
    const std::wstring name =
        std::wstring(folder) + L"zrkey-" + std::to_wstring(GetCurrentProcessId()) + L'-';
    for (int i = 0; i < kMostTries; ++i) {
        const std::wstring path = name + std::to_wstring(i);
        if (CreateDirectoryW(path.c_str(), nullptr)) {
            error.clear();
            return usablePath(toUtf8(path.c_str()));
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS) {
            break;
        }
    }
    error = {static_cast<int>(GetLastError()), std::system_category()};
    return {};
}

void forEachVariable(const std::function<void(std::string_view, std::string_view)>& take) {
    const std::unique_ptr<wchar_t, EnvironmentRelease> block(GetEnvironmentStringsW());
    for (wchar_t* variable = block.get(); variable && *variable;) {
        const std::size_t length = std::wcslen(variable);
        ErasedBytes utf8(3 * length);
        const int size =
            WideCharToMultiByte(CP_UTF8, 0, variable, static_cast<int>(length), utf8.data(),
                                static_cast<int>(utf8.size()), nullptr, nullptr);
        // The block is a copy of the environment. A value may be a PIN.
        secureErase(variable, length * sizeof(wchar_t));
        variable += length + 1;
        const std::string_view text(utf8.data(), static_cast<std::size_t>(size));
        // A name that begins with "=" is one of the system's own, the current directory of a drive.
        const std::size_t end = text.find('=');
        if (end != std::string_view::npos && end > 0) {
            take(text.substr(0, end), text.substr(end + 1));
        }
    }
}

std::string pathProblem(const std::string& path, PathUse) {
    const bool isAscii = std::all_of(path.begin(), path.end(),
                                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    // The library passes UTF-8 to functions that read the code page of the process. The manifest
    // makes that UTF-8, but Windows before version 1903 does not know this.
    return isAscii || GetACP() == CP_UTF8 ? ""
                                          : "contains characters outside ASCII, which this version "
                                            "of Windows reads differently";
}

std::string usablePath(const std::string& path) {
    if (pathProblem(path, PathUse::kModule).empty()) {
        return path;
    }
    const std::wstring wide = toWide(path);
    std::wstring name(GetShortPathNameW(wide.c_str(), nullptr, 0), L'\0');
    name.resize(GetShortPathNameW(wide.c_str(), name.data(), static_cast<DWORD>(name.size())));
    const std::string other = toUtf8(name.c_str());
    return name.empty() || !pathProblem(other, PathUse::kModule).empty() ? path : other;
}

std::uintptr_t lowestStackAddress() {
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return low;
}

void secureErase(void* memory, std::size_t size) {
    SecureZeroMemory(memory, size);
}

void holdStandardStreams() {
    for (const int stream : {kStandardInput, kStandardOutput, kStandardError}) {
        if (isDescriptorOpen(stream)) {
            continue;
        }
        // Opened for the wrong direction, so that reading or writing the stream still fails.
        const int null =
            _wopen(L"NUL", (stream == kStandardInput ? _O_WRONLY : _O_RDONLY) | _O_BINARY);
        if (null >= 0 && null != stream) {
            _dup2(null, stream);
            _close(null);
        }
    }
}

void ignoreClosedPipes() {
    // Writing to one is an error here.
}

bool isDescriptorOpen(int descriptor) {
    // The C library returns this handle for a standard stream that the caller closed.
    constexpr std::intptr_t nowhere = -2;
    const std::intptr_t handle = _get_osfhandle(descriptor);
    return handle != -1 && handle != nowhere;
}

int openForReading(const std::string& path, std::error_code& error) {
    return openFile(path, _O_RDONLY, error);
}

int openNewForWriting(const std::string& path, std::error_code& error) {
    return openFile(path, _O_WRONLY | _O_CREAT | _O_EXCL, error);
}

int openForWriting(const std::string& path, std::error_code& error, bool* isNew) {
    const int descriptor = openNewForWriting(path, error);
    if (isNew) {
        *isNew = descriptor >= 0;
    }
    return error == std::errc::file_exists ? openFile(path, _O_WRONLY | _O_CREAT, error)
                                           : descriptor;
}

std::error_code emptyFile(int descriptor) {
    struct _stat64 file = {};
    const bool keepsBytes =
        _fstat64(descriptor, &file) == 0 && (file.st_mode & _S_IFMT) == _S_IFREG;
    return {keepsBytes ? _chsize_s(descriptor, 0) : 0, std::generic_category()};
}

std::size_t readSome(int descriptor, char* bytes, std::size_t size, std::error_code& error) {
    _setmode(descriptor, _O_BINARY);
    const int count =
        _read(descriptor, bytes, static_cast<unsigned>(std::min<std::size_t>(size, 1U << 20)));
    error = count < 0 ? lastError() : std::error_code();
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

std::optional<std::uint64_t> fileSize(int descriptor) {
    struct _stat64 file = {};
    return _fstat64(descriptor, &file) == 0 && (file.st_mode & _S_IFMT) == _S_IFREG
               ? std::optional(static_cast<std::uint64_t>(file.st_size))
               : std::nullopt;
}

int duplicateDescriptor(int descriptor) {
    const int copy = _dup(descriptor);
    if (copy >= 0) {
        _setmode(copy, _O_BINARY);
    }
    return copy;
}

void redirectDescriptor(int target, int source) {
    _dup2(source, target);
}

std::error_code closeDescriptor(int descriptor) {
    return _close(descriptor) != 0 ? lastError() : std::error_code();
}

std::error_code writeAll(int descriptor, std::string_view bytes) {
    _setmode(descriptor, _O_BINARY);
    while (!bytes.empty()) {
        const auto chunk = static_cast<unsigned>(std::min<std::size_t>(bytes.size(), 1U << 20));
        const int written = _write(descriptor, bytes.data(), chunk);
        if (written < 0) {
            return lastError();
        }
        if (written == 0) {
            return std::make_error_code(std::errc::no_space_on_device);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

// A file that is deleted when its last descriptor is closed. Not the null device: under Wine each
// write to it takes milliseconds.
int openDroppedOutput() {
    wchar_t folder[MAX_PATH + 1];
    wchar_t path[MAX_PATH + 1];
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"zrk", 0, path) == 0) {
        return -1;
    }
    return _wopen(path, _O_RDWR | _O_BINARY | _O_TEMPORARY | _O_SHORT_LIVED | _O_NOINHERIT,
                  _S_IREAD | _S_IWRITE);
}

void rewindDroppedOutput(int descriptor) {
    _lseeki64(descriptor, 0, SEEK_SET);
}

}  // namespace zr::host
