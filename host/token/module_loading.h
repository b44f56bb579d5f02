// Loading a PKCS #11 module through the library, from wherever it and its configuration lie.
#pragma once

#include <filesystem>
#include <string>

#include "library.h"
#include "token_options.h"

namespace zr::host {

/// The form in which the library takes a module: it puts the current directory in front of every
/// path and resolves "..". The result leads from there to the module.
/// @param module  absolute.
/// @param folder  the current directory at the time of the call.
std::filesystem::path loadablePath(const std::filesystem::path& module,
                                   const std::filesystem::path& folder);

/// A provider with its module, which is unloaded when it goes; tokens must have gone before.
class LoadedModule {
public:
    /// Throws a Failure when no module is named, or when it or its configuration cannot be loaded.
    explicit LoadedModule(const ModuleOptions& options);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    ITokenProvider& provider() const { return *m_provider.get(); }

private:
    ComRef<ITokenProvider> m_provider;
};

}  // namespace zr::host
