// Session: a slot of a Cryptoki module and the session that is open on it.
//
// Every Cryptoki call on behalf of a host goes through Session::Call.
#pragma once

#include <memory>
#include <utility>

#include "pkcs11/cryptoki_types.h"
#include "pkcs11/module.h"

class Session {
public:
    /// Belongs to no module: every call returns CKR_CRYPTOKI_NOT_INITIALIZED.
    Session() = default;
    /// Opens nothing. Every call fails once the module has been finalised.
    /// @param module  kept; may be null.
    explicit Session(std::shared_ptr<Module> module)
        : m_module(std::move(module)), m_epoch(m_module ? m_module->epoch() : 0) {}

    CK_SLOT_ID slot() const { return m_ulSlotID; }
    void setSlot(CK_SLOT_ID slot) { m_ulSlotID = slot; }
    /// 0 when no session is open.
    CK_SESSION_HANDLE handle() const { return m_hSession; }
    void setHandle(CK_SESSION_HANDLE handle) { m_hSession = handle; }

    /// Whether there is a module that was not finalised since this was made.
    bool isAlive() const { return m_module && m_module->epoch() == m_epoch; }

    /// Calls an entry point of the module.
    /// @return its result; CKR_FUNCTION_NOT_SUPPORTED when it has no such entry point;
    ///         CKR_CRYPTOKI_NOT_INITIALIZED when the session is not alive, without a call, or when
    ///         the module was finalised during the call: what it returned is worthless then.
    template <class... Parameters, class... Arguments>
    CK_RV Call(CK_RV (*CK_FUNCTIONS::*member)(Parameters...), Arguments... arguments) const {
        if (!isAlive()) {
            return CKR_CRYPTOKI_NOT_INITIALIZED;
        }
        const auto function = m_module->entry(member);
        if (!function) {
            return CKR_FUNCTION_NOT_SUPPORTED;
        }
        const Module::Use use(*m_module);
        const CK_RV rv = function(arguments...);
        return isAlive() ? rv : CKR_CRYPTOKI_NOT_INITIALIZED;
    }

private:
    std::shared_ptr<Module> m_module;
    std::uint64_t m_epoch = 0;
    CK_SLOT_ID m_ulSlotID = 0;
    CK_SESSION_HANDLE m_hSession = 0;
};
