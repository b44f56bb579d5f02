// The member Load for Automation clients.
#include "host/automation/client_loading.h"

#include <windows.h>

#include <memory>

#include "host/automation/no_error_windows.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"
#include "host/token/paths.h"
#include "host/token/prepared_load.h"

namespace zr::automation {
namespace {

/// A module, loaded until destruction. Its dependencies are found beside it, without a change of where
/// this process looks for those of other DLLs.
class HeldModule {
public:
    explicit HeldModule(const std::filesystem::path& file)
        : m_module(LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {}
    ~HeldModule() {
        if (m_module) {
            FreeLibrary(m_module);
        }
    }
    HeldModule(const HeldModule&) = delete;
    HeldModule& operator=(const HeldModule&) = delete;

private:
    HMODULE m_module;
};

}  // namespace

void loadForClient(host::ProviderObject& provider, const host::Arguments& arguments,
                   const host::WideText& path) {
    const auto library = provider.use(arguments);
    const std::string name = host::toUtf8(path);
    const std::filesystem::path module = host::moduleFile(name);
    host::PreparedLoad load(name, module, host::chooseConfiguration(host::configurationPlaces({})));
    load.setFile(module);
    const NoErrorWindows quiet;
    const HeldModule held(module);
    const host::FolderChange toConfiguration(load.configurationFolder());
    const HRESULT result = library->Load(load.path().get());
    provider.noteLoad(*library.get(), host::toUtf8(module), result);
    if (FAILED(result)) {
        throw load.explain(*library.get(), result);
    }
}

}  // namespace zr::automation
