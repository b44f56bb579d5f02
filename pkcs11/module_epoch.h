// ModuleEpoch: lets a session know whether its module was finalised since the session was opened.
//
// After C_Finalize a module numbers its sessions anew, so an old number may name another token's
// session. Finalising acts on the whole process: every provider over the same module is concerned.
#pragma once

#include <atomic>
#include <cstdint>

#include "pkcs11/cryptoki.h"

/// The epoch of one loaded module. Epochs of the same Cryptoki module advance together; a value is
/// never used again in the process.
class ModuleEpoch {
public:
    /// Two loaded modules with the same C_Finalize are the same one, by whatever path they were
    /// loaded. A wrapper with a C_Finalize of its own counts as another module.
    using Identity = decltype(CK_FUNCTIONS::C_Finalize);

    /// Throws std::exception when out of memory.
    ModuleEpoch();
    ModuleEpoch(const ModuleEpoch&) = delete;
    ModuleEpoch& operator=(const ModuleEpoch&) = delete;
    ~ModuleEpoch();

    /// Says which module this is. To be called before the first session is opened.
    void identify(Identity identity);
    std::uint64_t value() const { return m_value.load(std::memory_order_relaxed); }
    /// Gives this and every other epoch of the same module a new value.
    void advance();

private:
    Identity m_identity = nullptr;
    std::atomic<std::uint64_t> m_value;
    ModuleEpoch* m_next;
};
