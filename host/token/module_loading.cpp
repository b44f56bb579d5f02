// Loads a PKCS #11 module through the library, wherever the module and its configuration are.
#include "host/token/module_loading.h"

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/load_cause.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kModuleVariable = "ZRKEY_MODULE";

Failure noCurrentFolder(std::error_code error) {
    return systemFailure(kExitModule, "find the current folder", error,
                         "change to another folder, or give --module and --workdir as full paths");
}

fs::path currentFolder() {
    std::error_code error;
    fs::path folder = fs::current_path(error);
    if (error) {
        throw noCurrentFolder(error);
    }
    return folder;
}

fs::path absolutePath(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error) {
        throw noCurrentFolder(error);
    }
    return absolute;
}

/// The same file with the links in its folder resolved: ".." after a link is the parent of the
/// link's target. The file itself may stay a link: a module may find its own files by its name.
fs::path withoutLinks(const fs::path& module) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(module.parent_path(), error);
    return error ? module : folder / module.filename();
}

/// Makes a folder the current one until destruction.
class FolderChange {
public:
    explicit FolderChange(const std::string& folder) {
        std::error_code error;
        // The current folder may not exist any more; there is no way back to it then.
        m_before = fs::current_path(error);
        error.clear();
        if (!folder.empty()) {
            fs::current_path(toPath(folder), error);
        }
        if (error) {
            throw systemFailure(kExitModule, "change to the folder " + inQuotes(folder), error,
                                "check --workdir, the folder that contains config.xml");
        }
    }
    ~FolderChange() {
        std::error_code ignored;
        fs::current_path(m_before, ignored);
    }
    FolderChange(const FolderChange&) = delete;
    FolderChange& operator=(const FolderChange&) = delete;

private:
    fs::path m_before;
};

std::string modulePath(const ModuleOptions& options) {
    std::string path =
        options.path.empty() ? environmentVariable(kModuleVariable).value_or("") : options.path;
    if (path.empty()) {
        throw commandFailure(kExitUsage, "load a module", "no module is named",
                             std::string("give --module PATH or set ") + kModuleVariable);
    }
    return path;
}

/// Throws a Failure when the library would load another module than the named one, or read
/// config.xml from another folder.
void checkPaths(const std::string& asked, const fs::path& module, const fs::path& folder) {
    if (const std::string problem = pathProblem(toUtf8(module), PathUse::kModule);
        !problem.empty()) {
        throw commandFailure(kExitModule, asked,
                             "its path " + inQuotes(toUtf8(module)) + " " + problem,
                             "rename it, or load it through a link with another path");
    }
    if (const std::string problem = pathProblem(toUtf8(folder), PathUse::kFolder);
        !problem.empty()) {
        throw commandFailure(kExitModule, asked,
                             "the working folder " + inQuotes(toUtf8(folder)) + " " + problem,
                             "choose another --workdir");
    }
}

}  // namespace

fs::path loadablePath(const fs::path& module, const fs::path& folder) {
    fs::path relative = module.lexically_normal().lexically_relative(folder);
    if (!relative.empty()) {
        return relative;
    }
    // On another drive: enough steps up to remove the whole folder.
    fs::path path;
    for (auto component = folder.begin(); component != folder.end(); ++component) {
        path /= "..";
    }
    return path.generic_string() + '/' + module.lexically_normal().generic_string();
}

LoadedModule::LoadedModule(const ModuleOptions& options) {
    const std::string name = modulePath(options);
    const fs::path module = withoutLinks(absolutePath(toPath(name)));
    const FolderChange change(options.workFolder);
    const fs::path folder = currentFolder();
    const fs::path loadable = loadablePath(module, folder);
    const std::string asked = "load the module " + inQuotes(name);
    checkPaths(asked, module, folder);
    m_path = toUtf8(module);
    searchBesideModule(m_path);

    HRESULT result = zrkey::createProvider(m_provider);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "create a provider", result,
                             "the system may be out of memory");
    }
    result = m_provider->Load(zrkey::Text(toUtf8(loadable)).get());
    if (FAILED(result)) {
        const Cause cause = findLoadCause({*m_provider.get(), result, module, folder, loadable});
        m_provider->Unload();
        throw explainedFailure(kExitModule, asked, result, cause);
    }
}

LoadedModule::~LoadedModule() {
    m_provider->Unload();
}

}  // namespace zr::host
