// Loads a PKCS #11 module through the library, wherever the module and its configuration are.
#include "host/token/module_loading.h"

#include <utf8cpp/utf8.h>

#include <optional>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"
#include "host/token/paths.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kModuleVariable = "ZRKEY_MODULE";
/// The library's limit for the current directory and the module path together.
constexpr std::size_t kLongestPath = 259;

/// The same file with the links in its folder resolved: ".." after a link is the parent of the
/// link's target. The file itself may stay a link: a module may find its own files by its name.
fs::path withoutLinks(const fs::path& module) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(module.parent_path(), error);
    return error ? module : folder / module.filename();
}

/// The folder that is current during Load.
struct LoadFolder {
    fs::path path;
    std::string what;         ///< how messages call it
    std::string alternative;  ///< how to get another one
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
void checkPaths(const std::string& asked, const fs::path& module, const LoadFolder& folder) {
    if (const std::string problem = pathProblem(toUtf8(module), PathUse::kModule);
        !problem.empty()) {
        throw commandFailure(kExitModule, asked,
                             "its path " + inQuotes(toUtf8(module)) + " " + problem,
                             "rename it, or load it through a link with another path");
    }
    if (const std::string problem = pathProblem(toUtf8(folder.path), PathUse::kFolder);
        !problem.empty()) {
        throw commandFailure(kExitModule, asked,
                             folder.what + " " + inQuotes(toUtf8(folder.path)) + " " + problem,
                             "choose another " + folder.alternative);
    }
}

/// Why a load may have failed, and what to try.
std::string loadAdvice(ITokenProvider& provider, const fs::path& module, const LoadFolder& folder,
                       const fs::path& loadable, const ConfigurationPlace& configuration) {
    std::error_code ignored;
    if (!fs::is_regular_file(module, ignored)) {
        return "the file does not exist: check --module";
    }
    if (!utf8::is_valid(toUtf8(loadable))) {
        return "its path is not valid UTF-8: rename it, or load it through a link";
    }
    if (toUtf8(folder.path).size() + 1 + toUtf8(loadable).size() > kLongestPath) {
        return folder.what +
               " and the module path together are longer than 259 bytes: choose a shorter " +
               folder.alternative;
    }
    INT count = 0;
    if (SUCCEEDED(provider.GetKeyCount(&count))) {
        return "the module was loaded, but " + configuration.description() +
               " is not valid: it needs a <driver> element, and lists shorter than 500 bytes";
    }
    return "it is not a PKCS #11 module for this platform, or it failed to start: check its own "
           "settings";
}

/// @param temporary  the folder of the configuration's copy; empty: the working folder.
LoadFolder loadFolder(const std::string& temporary) {
    // Its path without links, as the library finds it.
    const FolderChange change(temporary);
    return temporary.empty() ? LoadFolder{currentFolder(), "the working folder", "--workdir"}
                             : LoadFolder{currentFolder(), "the folder for temporary files",
                                          "one, or put config.xml into the working folder"};
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
    const ConfigurationPlace configuration = chooseConfiguration(configurationPlaces(options));
    const FolderChange change(options.workFolder);
    std::optional<TemporaryConfiguration> copy;
    if (configuration.kind != ConfigurationPlace::Kind::kWorkFolder) {
        copy.emplace(readConfiguration(configuration));
    }
    const LoadFolder folder = loadFolder(copy ? copy->folder() : "");
    const fs::path loadable = loadablePath(module, folder.path);
    const std::string asked = "load the module " + inQuotes(name);
    checkPaths(asked, module, folder);
    searchBesideModule(toUtf8(module));

    // In the working folder, which names the folder of the log file.
    HRESULT result = zrkey::createProvider(m_provider);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "create a provider", result,
                             "the system may be out of memory");
    }
    {
        const FolderChange toConfiguration(copy ? copy->folder() : "");
        result = m_provider->Load(zrkey::Text(toUtf8(loadable)).get());
    }
    if (FAILED(result)) {
        const std::string advice =
            result == E_OUTOFMEMORY
                ? "it has no usable C_GetFunctionList: name a PKCS #11 module with --module"
                : loadAdvice(*m_provider.get(), module, folder, loadable, configuration);
        m_provider->Unload();
        throw libraryFailure(kExitModule, asked, result, advice);
    }
}

LoadedModule::~LoadedModule() {
    m_provider->Unload();
}

}  // namespace zr::host
