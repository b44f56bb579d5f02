// Loads a PKCS #11 module through the library, wherever the module and its configuration are.
#include "host/token/module_loading.h"

#include "host/output/failure.h"
#include "host/system/module_search.h"
#include "host/system/system.h"
#include "host/system/tracing.h"
#include "host/system/utf8_path.h"
#include "host/token/module_choice.h"
#include "host/token/paths.h"
#include "host/token/prepared_load.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// The module, or the spy that calls it when the command is traced. Throws a Failure.
fs::path throughSpy(const fs::path& module, const std::string& asked) {
    std::error_code error;
    const std::string spy = spyInsteadOf(toUtf8(module), error);
    if (error) {
        throw systemFailure(kExitFailure, asked, error, "the pipe for the trace is not usable");
    }
    return spy.empty() ? module : toPath(spy);
}

}  // namespace

LoadedModule::LoadedModule(const ModuleOptions& options) {
    const std::string name = chooseModule(options.path).path;
    const fs::path module = moduleFile(name);
    const ConfigurationPlace configuration = chooseConfiguration(configurationPlaces(options));
    const FolderChange change(options.workFolder);
    PreparedLoad load(name, module, configuration);
    const fs::path traced = throughSpy(module, load.asked());
    load.setFile(traced);
    m_path = toUtf8(traced);
    m_file = toUtf8(module);
    searchBesideModule(m_path);

    // In the working folder, which names the folder of the log file.
    HRESULT result = zrkey::createProvider(m_provider);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "create a provider", result,
                             "the system may be out of memory");
    }
    const FolderChange toConfiguration(load.configurationFolder());
    result = m_provider->Load(load.path().get());
    if (FAILED(result)) {
        // In the same folder: the module may start there again.
        const Failure failure = load.explain(*m_provider.get(), result);
        m_provider->Unload();
        throw failure;
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
