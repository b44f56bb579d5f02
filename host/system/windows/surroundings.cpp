// What a module and the library need of the system, on Windows.
#include "host/system/surroundings.h"

#include <array>
#include <vector>

#include <windows.h>

#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

/// "10.0" of a file's version; empty when it has none.
std::string versionOf(const wchar_t* file) {
    DWORD ignored = 0;
    std::vector<char> block(GetFileVersionInfoSizeW(file, &ignored));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    if (block.empty() ||
        !GetFileVersionInfoW(file, 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &size) || !info) {
        return {};
    }
    const auto part = [](DWORD words, int shift) {
        return std::to_string((words >> shift) & 0xFFFF);
    };
    std::string version = part(info->dwFileVersionMS, 16);
    return version.append(".")
        .append(part(info->dwFileVersionMS, 0))
        .append(".")
        .append(part(info->dwFileVersionLS, 16))
        .append(".")
        .append(part(info->dwFileVersionLS, 0));
}

UsedLibrary loadedLibrary(const wchar_t* name) {
    std::array<wchar_t, 32768> path = {};
    const DWORD size =
        GetModuleFileNameW(GetModuleHandleW(name), path.data(), static_cast<DWORD>(path.size()));
    if (size == 0 || size >= path.size()) {
        return {};
    }
    return {toUtf8(std::filesystem::path(path.data())), versionOf(path.data())};
}

}  // namespace

UsedLibrary zrkeyLibrary() {
    return loadedLibrary(L"zrkey.dll");
}

UsedLibrary automationLibrary() {
    return loadedLibrary(L"oleaut32.dll");
}

ReaderService readerService() {
    return {};
}

}  // namespace zr::host
