// A model of the lives of objects: an object lives as long as the host or a child refers to it, and
// a provider that is destroyed unloads its module.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "tests/fuzz/objects.h"
#include "tests/support/stateful/stateful.h"

namespace zr::fuzz {

using zr::test::Stateful;

inline constexpr int kModules = 2;

/// The modules, and what the library must have done to them.
struct Modules {
    std::array<Stateful*, kModules> all;
    /// How often the library ended all sessions of the module.
    std::array<std::uint64_t, kModules> epochs = {};
    /// How many references to its file the library holds.
    std::array<std::size_t, kModules> references = {};
    /// How often the library called C_Finalize.
    std::array<std::size_t, kModules> finalizations = {};
};

/// A provider as the library has it.
struct ProviderLife {
    Modules& modules;
    int module = -1;  ///< what it loaded last, as long as it is not unloaded

    explicit ProviderLife(Modules& all) : modules(all) {}
    ProviderLife(const ProviderLife&) = delete;
    ProviderLife& operator=(const ProviderLife&) = delete;
    ~ProviderLife() { unload(); }

    void unload() {
        if (module >= 0) {
            ++modules.epochs[module];
            ++modules.finalizations[module];
            --modules.references[module];
            module = -1;
        }
    }
};

/// A token as the library has it.
struct TokenLife {
    std::shared_ptr<ProviderLife> provider;
    int module;
    CK_ULONG slot;
    CK_SESSION_HANDLE session;
    std::uint64_t epoch;

    bool isAlive() const { return provider->modules.epochs[module] == epoch; }
    Stateful& ofModule() const { return *provider->modules.all[module]; }
};

/// What the host holds of an object: a reference, and what the reference keeps alive.
template <class Interface, class Life>
struct Handle {
    std::shared_ptr<Life> life;
    ComRef<Interface> object;  // released first
};

using Provider = Handle<ITokenProvider, ProviderLife>;
using Token = Handle<IKeyObject, TokenLife>;
/// Files, containers and certificates keep their token.
template <class Interface>
using Child = Handle<Interface, TokenLife>;

}  // namespace zr::fuzz
