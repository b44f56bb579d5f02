// Where Windows looks for the dependencies of modules, in the process of the command.
#include "host/system/module_search.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include <windows.h>

#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

/// Lets the dependencies of modules be found in a folder. The system keeps each folder that is added,
/// also one that it knows already.
void addSearchFolder(const std::filesystem::path& folder) {
    static std::set<std::wstring> s_added;
    if (folder.is_absolute() && s_added.insert(folder.wstring()).second) {
        AddDllDirectory(folder.c_str());
    }
}

}  // namespace

void restrictModuleSearch() {
    SetDllDirectoryW(L"");
    // Wine needs this as well. It excludes the folders of PATH too: they are added again, without
    // those that depend on the current directory.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    const std::wstring path = toPath(environmentVariable("PATH").value_or("")).wstring();
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find(L';', begin), path.size());
        addSearchFolder(path.substr(begin, end - begin));
        begin = end + 1;
    }
}

void searchBesideModule(const std::string& module) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(toPath(module), error);
    if (!error) {
        addSearchFolder(path.lexically_normal().parent_path());
    }
}

}  // namespace zr::host
