// A session beside the library's on one of its tokens, with failures for people.
#pragma once

#include <string>

#include "host/output/failure.h"
#include "host/token/cryptoki_session.h"
#include "host/token/token_table.h"

namespace zr::host {

class TokenSession;

class DirectSession {
public:
    /// Opens the session. Throws a Failure when the token is gone, or the module opens none.
    /// @param module  borrowed; initialised as long as this object lives.
    /// @param token   its index and texts; it is open in the library.
    /// @param asked   what is done, for failures: "list the certificates".
    DirectSession(const Cryptoki& module, const TokenRow& token, std::string asked,
                  CryptokiSession::Access access);
    /// The same, with the login of the token.
    /// @param token  borrowed; it must outlive this object.
    DirectSession(const TokenSession& token, std::string asked, CryptokiSession::Access access);

    /// Logs in where the login of the library is not valid. Throws a Failure.
    /// @param pin  with which the library has logged in.
    void repeatLogin(const Pin& pin, bool securityOfficer);
    const Cryptoki& module() const { return m_module; }
    CK_SLOT_ID slot() const { return m_slot; }
    CryptokiSession* operator->() { return &m_session; }
    /// From now on, failures say this.
    void setAsked(std::string asked) { m_asked = std::move(asked); }
    const std::string& asked() const { return m_asked; }
    /// The failure of the last call of the session.
    Failure failure(CK_RV result) const;
    /// Throws that failure, unless the result is CKR_OK.
    void require(CK_RV result) const;

private:
    CK_SLOT_ID findSlot(const TokenRow& token) const;

    std::string m_asked;
    const Cryptoki& m_module;
    CK_SLOT_ID m_slot;
    CryptokiSession m_session;
};

/// The failure of a call.
/// @param function  "C_SignFinal".
Failure callFailure(const std::string& asked, const std::string& function, CK_RV result);

}  // namespace zr::host
