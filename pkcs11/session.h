// Session: a slot of a Cryptoki module and the session that is open on it.
//
// Every Cryptoki call on behalf of a host goes through Session::Call.
#pragma once

#include <memory>
#include <utility>

#include "pkcs11/cryptoki.h"
#include "pkcs11/module.h"

class Session {
public:
    /// Belongs to no module: every call returns CKR_CRYPTOKI_NOT_INITIALIZED.
    Session() = default;
    /// Opens nothing. Every call fails once the module has been finalised.
    /// @param module  kept; may be null.
    explicit Session(std::shared_ptr<const Module> module)
        : m_module(std::move(module)), m_epoch(m_module ? m_module->epoch() : 0) {}

    CK_SLOT_ID slot() const { return m_ulSlotID; }
    void setSlot(CK_SLOT_ID slot) { m_ulSlotID = slot; }
    /// 0 when no session is open.
    CK_SESSION_HANDLE handle() const { return m_hSession; }
    void setHandle(CK_SESSION_HANDLE handle) { m_hSession = handle; }

    /// Calls an entry point of the module.
    /// @return its result; CKR_CRYPTOKI_NOT_INITIALIZED, without a call, when there is no module or
    ///         it was finalised meanwhile; CKR_FUNCTION_NOT_SUPPORTED without such an entry point.
    template <class... Parameters, class... Arguments>
    CK_RV Call(CK_RV (*CK_FUNCTIONS::*member)(Parameters...), Arguments... arguments) const {
        if (!m_module || m_module->epoch() != m_epoch) {
            return CKR_CRYPTOKI_NOT_INITIALIZED;
        }
        const auto function = m_module->entry(member);
        return function ? function(arguments...) : CKR_FUNCTION_NOT_SUPPORTED;
    }

private:
    std::shared_ptr<const Module> m_module;
    std::uint64_t m_epoch = 0;
    CK_SLOT_ID m_ulSlotID = 0;
    CK_SESSION_HANDLE m_hSession = 0;
};
