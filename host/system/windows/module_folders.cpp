// Where Windows keeps PKCS #11 modules: its own folder, and those of programs.
#include "host/system/module_folders.h"

#include <filesystem>
#include <system_error>

#include <windows.h>

#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// More programs than people install.
constexpr int kMostFolders = 1000;

std::vector<fs::path> foldersIn(const fs::path& folder) {
    std::vector<fs::path> folders;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (int i = 0; !error && i < kMostFolders && entry != fs::directory_iterator(); ++i) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) {
            folders.push_back(entry->path());
        }
        entry.increment(error);
    }
    return folders;
}

/// Makers install into PROGRAM or MAKER\PROGRAM, often into a folder in it.
void addProgram(const fs::path& program, std::vector<std::string>& folders) {
    folders.push_back(toUtf8(program));
    for (const char* inner : {"pkcs11", "lib", "bin"}) {
        folders.push_back(toUtf8(program / inner));
    }
}

}  // namespace

std::vector<std::string> moduleFolders() {
    std::vector<std::string> folders;
    wchar_t system[MAX_PATH + 1];
    if (const UINT size = GetSystemDirectoryW(system, MAX_PATH); size > 0 && size < MAX_PATH) {
        folders.push_back(toUtf8(fs::path(system)));
    }
    const fs::path programs = toPath(environmentVariable("ProgramFiles").value_or(""));
    if (programs.is_absolute()) {
        for (const fs::path& maker : foldersIn(programs)) {
            addProgram(maker, folders);
            for (const fs::path& program : foldersIn(maker)) {
                addProgram(program, folders);
            }
        }
    }
    return folders;
}

std::vector<std::string> moduleConfigurationFolders() {
    return {};
}

std::vector<std::string> moduleFileNames(const std::string& name) {
    return {name, name + ".dll"};
}

}  // namespace zr::host
