// Direct calls of a module that the library has loaded, for the extensions of the object model.
#pragma once

#include <zrkey/zrkey.hpp>

#include <list>
#include <memory>
#include <string>

#include "host/token/cryptoki.h"

namespace zr::host {

/// Shared by a provider and the tokens that it opened on this module. All of a process are used by one
/// thread at a time.
class ModuleCalls {
public:
    /// Create this object as soon as the library has initialised the module. Later it cannot find
    /// out whether the calls are apart, and would initialise a module that has ended.
    /// @param path  of the module, absolute, in UTF-8.
    explicit ModuleCalls(const std::string& path);
    ~ModuleCalls();
    ModuleCalls(const ModuleCalls&) = delete;
    ModuleCalls& operator=(const ModuleCalls&) = delete;

    /// The calls; null after the end. Who makes one keeps the reference meanwhile: a module may call
    /// back, and the host may unload it then.
    const std::shared_ptr<const Cryptoki>& get() const { return m_calls; }
    /// Whether the library's login is not valid for these calls; false too when there are none.
    bool areApart() const { return m_calls && m_calls->isApart(); }
    /// The library unloads the module, for the whole process. Ends the calls of other providers to the
    /// same module too.
    void end();
    /// Keeps a provider of the library that has loaded the module until no provider and no token of
    /// this module is left in the process: the library ends a module for all its providers when the
    /// first one is released. When out of memory, the provider is released at once.
    void keep(zrkey::ComRef<ITokenProvider> provider) noexcept;

private:
    /// Another one of the same module; null: there is none.
    ModuleCalls* findOther() const;

    std::list<zrkey::ComRef<ITokenProvider>> m_kept;  ///< destroyed last
    std::shared_ptr<const Cryptoki> m_calls;
    /// Equal when modules are the same one, whatever their paths; null: not shared with the library.
    const void* m_identity = nullptr;
};

}  // namespace zr::host
