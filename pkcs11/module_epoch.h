// ModuleEpoch: shows a session whether its module was finalised after the session was opened.
//
// After C_Finalize a module may give an old session handle to a session of another token.
// C_Finalize acts on the whole process, so it affects every provider that uses the module.
#pragma once

#include <atomic>
#include <cstdint>

#include "pkcs11/cryptoki_types.h"

/// The epoch of one loaded module. Epochs of the same Cryptoki module advance together; a value is
/// never used again in the process.
class ModuleEpoch {
public:
    /// Loaded modules with the same C_Finalize are one module, whatever their paths. A wrapper with
    /// its own C_Finalize counts as another module.
    using Identity = decltype(CK_FUNCTIONS::C_Finalize);

    ModuleEpoch();
    ModuleEpoch(const ModuleEpoch&) = delete;
    ModuleEpoch& operator=(const ModuleEpoch&) = delete;
    ~ModuleEpoch();

    /// Sets the module of this epoch. Call it before the first session is opened.
    void identify(Identity identity);
    std::uint64_t value() const { return m_value.load(std::memory_order_relaxed); }
    /// Gives this and every other epoch of the same module a new value.
    void advance();

private:
    Identity m_identity = nullptr;
    std::atomic<std::uint64_t> m_value;
    ModuleEpoch* m_next;
};
