// Where browsers look for the manifest of a native messaging host on Windows.
#include "host/web/manifest_places.h"

#include <array>

#include <windows.h>

#include "host/system/utf8_path.h"
#include "host/web/host_names.h"
#include "host/web/web_places.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr LONG kMostLetters = 32767;

const char* makerOf(Browser browser) {
    constexpr std::array<const char*, 4> kMakers = {"Chromium", "Google\\Chrome", "Microsoft\\Edge",
                                                    "Mozilla"};
    return kMakers[static_cast<std::size_t>(browser)];
}

HKEY rootOf(SettingsScope scope) {
    return scope == SettingsScope::kUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

/// Below the root.
std::string keyOf(Browser browser) {
    return webPlaces()
        .registryKey.append("\\")
        .append(makerOf(browser))
        .append("\\NativeMessagingHosts\\")
        .append(kBrowserHostName);
}

std::wstring wide(const std::string& text) {
    return toPath(text).wstring();
}

std::error_code errorOf(LONG result) {
    return {static_cast<int>(result), std::system_category()};
}

bool isNothingThere(LONG result) {
    return result == ERROR_FILE_NOT_FOUND || result == ERROR_PATH_NOT_FOUND;
}

/// Whether a key has neither keys nor values.
bool isEmpty(HKEY root, const std::wstring& key) {
    HKEY open = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &open) != ERROR_SUCCESS) {
        return false;
    }
    DWORD keys = 1;
    DWORD values = 1;
    RegQueryInfoKeyW(open, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr,
                     nullptr, nullptr, nullptr);
    RegCloseKey(open);
    return keys == 0 && values == 0;
}

}  // namespace

std::optional<fs::path> ownManifest(Browser browser, SettingsScope scope) {
    const std::optional<fs::path> settings = settingsFile(scope);
    if (!settings) {
        return std::nullopt;
    }
    return settings->parent_path() /
           std::string(kBrowserHostName).append(".").append(nameOf(browser)).append(".json");
}

std::optional<fs::path> usedManifest(Browser browser, SettingsScope scope, std::error_code& error) {
    std::wstring text(kMostLetters, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LONG result =
        RegGetValueW(rootOf(scope), wide(keyOf(browser)).c_str(), nullptr,
                     RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, text.data(), &size);
    error = result == ERROR_SUCCESS || isNothingThere(result) ? std::error_code() : errorOf(result);
    if (result != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return fs::path(text.c_str());
}

std::error_code nameManifest(Browser browser, SettingsScope scope) {
    const std::optional<fs::path> file = ownManifest(browser, scope);
    if (!file) {
        return std::make_error_code(std::errc::no_such_file_or_directory);
    }
    HKEY key = nullptr;
    LONG result = RegCreateKeyExW(rootOf(scope), wide(keyOf(browser)).c_str(), 0, nullptr, 0,
                                  KEY_WRITE | KEY_WOW64_64KEY, nullptr, &key, nullptr);
    if (result == ERROR_SUCCESS) {
        fs::path native = *file;
        const std::wstring text = native.make_preferred().wstring();
        result =
            RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                           static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(key);
    }
    return errorOf(result);
}

std::error_code forgetManifest(Browser browser, SettingsScope scope) {
    const HKEY root = rootOf(scope);
    std::wstring key = wide(keyOf(browser));
    const LONG result = RegDeleteKeyExW(root, key.c_str(), KEY_WOW64_64KEY, 0);
    if (result != ERROR_SUCCESS && !isNothingThere(result)) {
        return errorOf(result);
    }
    // What nameManifest made around it, unless others use it.
    const std::size_t end = webPlaces().registryKey.size();
    for (key.resize(key.rfind(L'\\')); key.size() > end && isEmpty(root, key);
         key.resize(key.rfind(L'\\'))) {
        RegDeleteKeyExW(root, key.c_str(), KEY_WOW64_64KEY, 0);
    }
    return {};
}

std::string manifestKey(Browser browser, SettingsScope scope) {
    return std::string(scope == SettingsScope::kUser ? "HKCU\\" : "HKLM\\").append(keyOf(browser));
}

int ownFolders() {
    return 1;
}

fs::path programOf(const fs::path& manifest, const fs::path& named) {
    return manifest.parent_path() / named;
}

fs::path defaultHostProgram() {
    std::wstring path(kMostLetters, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.empty()
               ? fs::path()
               : fs::path(path).parent_path() / std::string(kBrowserHostProgram).append(".exe");
}

bool isHostProgramName(const fs::path& file) {
    return lstrcmpiW(file.filename().c_str(),
                     wide(std::string(kBrowserHostProgram).append(".exe")).c_str()) == 0;
}

}  // namespace zr::host
