// A session beside the library's on one of its tokens, with failures for people.
#include "host/token/direct_session.h"

#include <utility>

#include "host/system/interruption.h"
#include "host/token/cryptoki_names.h"
#include "host/token/pkcs11_header.h"
#include "host/token/token_state.h"

namespace zr::host {

Failure callFailure(const std::string& asked, const std::string& function, CK_RV result) {
    const Cause cause = moduleCause(function, result);
    const int exitCode = result == CKR_USER_NOT_LOGGED_IN ? kExitLoginNeeded : kExitFailure;
    return commandFailure(exitCode, asked, cause.text, cause.advice);
}

DirectSession::DirectSession(const Cryptoki& module, const TokenRow& token, std::string asked,
                             CryptokiSession::Access access)
    : m_asked(std::move(asked)),
      m_module(module),
      m_slot(findSlot(token)),
      m_session(m_module, m_slot, access) {
    require(m_session.result());
}

void DirectSession::repeatLogin(const Pin& pin, bool securityOfficer) {
    if (!m_module.isApart()) {
        return;
    }
    const CK_RV result = m_session.login(securityOfficer ? CKU_SO : CKU_USER, pin);
    // p11-kit's proxy passes the login of the library on to the same module.
    if (result != CKR_USER_ALREADY_LOGGED_IN) {
        require(result);
    }
}

CK_SLOT_ID DirectSession::findSlot(const TokenRow& token) const {
    stopIfInterrupted();
    const TokenState state = readTokenState(m_module, token);
    if (isTokenGone(state.result)) {
        throw commandFailure(kExitFailure, m_asked, "the token was removed",
                             "connect it and try again");
    }
    if (state.result != CKR_OK) {
        throw callFailure(m_asked, "C_GetTokenInfo", state.result);
    }
    return state.slot;
}

Failure DirectSession::failure(CK_RV result) const {
    return callFailure(m_asked, m_session.lastFunction(), result);
}

void DirectSession::require(CK_RV result) const {
    if (result != CKR_OK) {
        throw failure(result);
    }
}

}  // namespace zr::host
