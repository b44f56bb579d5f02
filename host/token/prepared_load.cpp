// One Load of the library: the path and the folder that it needs.
#include "host/token/prepared_load.h"

#include <utility>

#include "host/output/printable.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
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

/// @param changed      the current folder during Load; empty: that of now.
/// @param isTemporary  whether it contains a copy of the configuration.
LoadFolder loadFolder(const std::string& changed, bool isTemporary) {
    // Its path without links, as the library finds it.
    const FolderChange change(changed);
    return isTemporary ? LoadFolder{currentFolder(), "the folder for temporary files",
                                    "one, or put config.xml into the working folder"}
                       : LoadFolder{currentFolder(), "the working folder", "--workdir"};
}

/// The working folder under a path that the library can use; empty when it needs none.
std::string otherWorkFolder() {
    const std::string folder = toUtf8(currentFolder());
    const std::string usable = usablePath(folder);
    return usable == folder ? std::string() : usable;
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

PreparedLoad::PreparedLoad(const std::string& name, fs::path module,
                           ConfigurationPlace configuration)
    : m_asked("load the module " + inQuotes(name)),
      m_module(std::move(module)),
      m_configuration(std::move(configuration)) {
    if (m_configuration.kind != ConfigurationPlace::Kind::kWorkFolder) {
        m_copy.emplace(readConfiguration(m_configuration));
    }
    m_changedFolder = m_copy ? m_copy->folder() : otherWorkFolder();
    m_folder = loadFolder(m_changedFolder, m_copy.has_value());
}

void PreparedLoad::setFile(const fs::path& file) {
    const fs::path usable = toPath(usablePath(toUtf8(file)));
    m_loadable = loadablePath(usable, m_folder.path);
    checkPaths(m_asked, usable, m_folder);
}

zrkey::Text PreparedLoad::path() const {
    return zrkey::Text(toUtf8(m_loadable));
}

Failure PreparedLoad::explain(ITokenProvider& provider, HRESULT result) const {
    const Cause cause =
        findLoadCause({provider, result, m_module, m_loadable, m_folder, m_configuration});
    return explainedFailure(kExitModule, m_asked, result, cause);
}

}  // namespace zr::host
