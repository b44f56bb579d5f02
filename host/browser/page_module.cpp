// The provider of a connection, with the module that browser.json names.
#include "host/browser/page_module.h"

#include <filesystem>
#include <string>
#include <utility>

#include "host/browser/complaint.h"
#include "host/browser/page_error.h"
#include "host/output/failure.h"
#include "host/system/module_search.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"
#include "host/token/paths.h"
#include "host/token/prepared_load.h"

namespace zr::host {
namespace {

ConfigurationPlace configurationOf(const SitePolicy& policy) {
    const std::string file = policy.configuration();
    return file.empty() ? ConfigurationPlace{ConfigurationPlace::Kind::kBuiltIn, {}}
                        : ConfigurationPlace{ConfigurationPlace::Kind::kOption, toPath(file)};
}

/// Throws a Failure.
std::shared_ptr<ProviderObject> load(const std::string& name, ConfigurationPlace configuration) {
    const std::filesystem::path module = moduleFile(name);
    PreparedLoad prepared(name, module, std::move(configuration));
    prepared.setFile(module);
    searchBesideModule(toUtf8(module));
    zrkey::ComRef<ITokenProvider> library;
    HRESULT result = zrkey::createProvider(library);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "create a provider", result,
                             "the system may be out of memory");
    }
    const FolderChange toConfiguration(prepared.configurationFolder());
    result = library->Load(prepared.path().get());
    if (FAILED(result)) {
        // In the same folder: the module may start there again.
        const Failure failure = prepared.explain(*library.get(), result);
        library->Unload();
        throw failure;
    }
    auto calls = std::make_shared<ModuleCalls>(toUtf8(module));
    return std::make_shared<ProviderObject>(std::move(library), std::move(calls));
}

}  // namespace

std::shared_ptr<ProviderObject> loadPageModule(const SitePolicy& policy) {
    const std::string module = policy.module();
    if (module.empty()) {
        throw PageError(page_code::kNoModule, "browser.json names no module");
    }
    try {
        return load(module, configurationOf(policy));
    } catch (const Failure& failure) {
        // The page does not read paths of this machine.
        complain(failure.line());
        throw PageError(page_code::kNoModule,
                        "the module cannot be loaded; the host's standard error says why");
    }
}

}  // namespace zr::host
