// Loading a PKCS #11 module through the library, from wherever it and its configuration lie.
#include "module_loading.h"

#include "failure.h"
#include "system.h"
#include "variant.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kModuleVariable = "ZRKEY_MODULE";
constexpr const char* kConfiguration = "config.xml";
/// What the library has room for: current directory and module path together.
constexpr std::size_t kLongestPath = 259;

fs::path toPath(const std::string& utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

std::string toUtf8(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

Failure noCurrentFolder() {
    return failed(kExitModule, "find the current folder", "the system refused it",
                  "change to one that is there, or give --module and --workdir in full");
}

fs::path currentFolder() {
    std::error_code error;
    fs::path folder = fs::current_path(error);
    if (error) {
        throw noCurrentFolder();
    }
    return folder;
}

fs::path absolutePath(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error) {
        throw noCurrentFolder();
    }
    return absolute;
}

/// The same file without ".." behind a link, which leads to where the link leads. The file itself
/// may be a link: a module may look for its own under the name it is loaded by.
fs::path withoutLinks(const fs::path& module) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(module.parent_path(), error);
    return error ? module : folder / module.filename();
}

/// Makes a folder the current one while it lives.
class FolderChange {
public:
    explicit FolderChange(const std::string& folder) {
        std::error_code error;
        // Without one that is there, none is gone back to.
        m_before = fs::current_path(error);
        error.clear();
        if (!folder.empty()) {
            fs::current_path(toPath(folder), error);
        }
        if (error) {
            throw failed(kExitModule, "change to the folder " + inQuotes(folder),
                         "the system refused it", "give --workdir with the folder of config.xml");
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
    const std::string path =
        options.path.empty() ? environmentVariable(kModuleVariable).value_or("") : options.path;
    if (path.empty()) {
        throw failed(kExitUsage, "load a module", "none is named",
                     std::string("give --module PATH or set ") + kModuleVariable);
    }
    return path;
}

/// Why a load failed, as far as it shows from outside.
std::string loadAdvice(ITokenProvider& provider, const fs::path& module, const fs::path& folder,
                       const fs::path& loadable) {
    std::error_code ignored;
    const std::string place = inQuotes(toUtf8(folder));
    if (!fs::exists(folder / kConfiguration, ignored)) {
        return "there is no config.xml in the working directory " + place +
               ": put one there, with a <driver> element, or name its folder by --workdir";
    }
    if (!fs::is_regular_file(module, ignored)) {
        return "there is no such file: look at --module";
    }
    if (toUtf8(folder).size() + 1 + toUtf8(loadable).size() > kLongestPath) {
        return "working directory and module path are longer than 259 bytes together: choose a "
               "shorter --workdir";
    }
    INT count = 0;
    if (SUCCEEDED(provider.GetKeyCount(&count))) {
        return "the module is fine, config.xml in " + place +
               " is not: it needs a <driver> element, and lists below 500 bytes";
    }
    return "it is no PKCS #11 module of this machine's kind, or it did not start: look at its own "
           "settings";
}

}  // namespace

fs::path loadablePath(const fs::path& module, const fs::path& folder) {
    const fs::path relative = module.lexically_normal().lexically_relative(folder);
    if (!relative.empty()) {
        return relative;
    }
    // On another drive: as many steps up as the folder has components leave nothing of it.
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

    HRESULT result = createProvider(m_provider);
    if (FAILED(result)) {
        throw refused(kExitFailure, "make a provider", result, "look for free memory");
    }
    result = m_provider->Load(Text(toUtf8(loadable)).get());
    if (FAILED(result)) {
        const std::string advice =
            result == E_OUTOFMEMORY
                ? "it has no usable C_GetFunctionList: name a PKCS #11 module by --module"
                : loadAdvice(*m_provider.get(), module, folder, loadable);
        m_provider->Unload();
        throw refused(kExitModule, "load the module " + inQuotes(name), result, advice);
    }
}

LoadedModule::~LoadedModule() {
    m_provider->Unload();
}

}  // namespace zr::host
