// Loads a PKCS #11 module through the library, wherever the module and its configuration are.
#include "host/token/module_loading.h"

#include <optional>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/system.h"
#include "host/system/tracing.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"
#include "host/token/load_cause.h"
#include "host/token/module_choice.h"
#include "host/token/paths.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// The same file with the links in its folder resolved: ".." after a link is the parent of the
/// link's target. The file itself may stay a link: a module may find its own files by its name.
fs::path withoutLinks(const fs::path& module) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(module.parent_path(), error);
    return error ? module : folder / module.filename();
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

/// The module, or the spy that calls it when the command is traced. Throws a Failure.
fs::path throughSpy(const fs::path& module, const std::string& asked) {
    std::error_code error;
    const std::string spy = spyInsteadOf(toUtf8(module), error);
    if (error) {
        throw systemFailure(kExitFailure, asked, error, "the pipe for the trace is not usable");
    }
    return spy.empty() ? module : toPath(spy);
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

fs::path moduleFile(const std::string& name) {
    return withoutLinks(absolutePath(toPath(name)));
}

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
    const std::string name = chooseModule(options.path).path;
    const fs::path module = moduleFile(name);
    const ConfigurationPlace configuration = chooseConfiguration(configurationPlaces(options));
    const FolderChange change(options.workFolder);
    std::optional<TemporaryConfiguration> copy;
    if (configuration.kind != ConfigurationPlace::Kind::kWorkFolder) {
        copy.emplace(readConfiguration(configuration));
    }
    const LoadFolder folder = loadFolder(copy ? copy->folder() : "");
    const std::string asked = "load the module " + inQuotes(name);
    const fs::path traced = throughSpy(module, asked);
    const fs::path loadable = loadablePath(traced, folder.path);
    checkPaths(asked, traced, folder);
    m_path = toUtf8(traced);
    m_file = toUtf8(module);
    searchBesideModule(m_path);

    // In the working folder, which names the folder of the log file.
    HRESULT result = zrkey::createProvider(m_provider);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "create a provider", result,
                             "the system may be out of memory");
    }
    const FolderChange toConfiguration(copy ? copy->folder() : "");
    result = m_provider->Load(zrkey::Text(toUtf8(loadable)).get());
    if (FAILED(result)) {
        // In the same folder: the module may start there again.
        const Cause cause =
            findLoadCause({*m_provider.get(), result, module, loadable, folder, configuration});
        m_provider->Unload();
        throw explainedFailure(kExitModule, asked, result, cause);
    }
}

LoadedModule::~LoadedModule() {
    m_calls.reset();
    m_provider->Unload();
}

const Cryptoki& LoadedModule::calls() const {
    if (!m_calls) {
        m_calls = std::make_unique<Cryptoki>(m_path);
        m_calls->startApart();
    }
    return *m_calls;
}

}  // namespace zr::host
