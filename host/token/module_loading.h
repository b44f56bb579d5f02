// Loads a PKCS #11 module through the library, wherever the module and its configuration are.
#pragma once

#include <zrkey/zrkey.hpp>

#include <memory>
#include <string>

#include "host/system/interruption.h"
#include "host/token/cryptoki.h"
#include "host/token/token_options.h"

namespace zr::host {

/// A provider with its module. Destruction unloads the module; the tokens must be released before.
/// Interruptions are noted meanwhile.
class LoadedModule {
public:
    /// Throws a Failure when no module is named, or when it or its configuration cannot be loaded.
    explicit LoadedModule(const ModuleOptions& options);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    ITokenProvider& provider() const { return *m_provider.get(); }
    /// The path of what is loaded, absolute, in UTF-8.
    const std::string& path() const { return m_path; }
    /// The module itself, also when a spy is loaded in its place.
    const std::string& file() const { return m_file; }
    /// For direct calls; valid as long as this object.
    const Cryptoki& calls() const;

private:
    InterruptionGuard m_interruptions;  ///< destroyed last
    std::string m_path;
    std::string m_file;
    zrkey::ComRef<ITokenProvider> m_provider;
    mutable std::unique_ptr<Cryptoki> m_calls;  ///< made when they are first needed
};

}  // namespace zr::host
