// The state of a stateful Cryptoki module between C_Initialize and C_Finalize: sessions, their
// searches and operations, and who is logged in where.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/stateful/stateful_tokens.h"

namespace zr::test {

/// A session; it is dead when the module was finalised, whatever numbers later sessions have.
struct ModuleSession {
    CK_ULONG token = 0;
    bool isSearchOpen = false;
    std::vector<CK_OBJECT_HANDLE> found;
    /// The ID of the key of an operation that was begun.
    std::string signingKey;
    std::string verifyingKey;
    bool isSigning = false;
    bool isVerifying = false;
};

class ModuleSessions {
public:
    explicit ModuleSessions(StatefulTokens* tokens) : m_tokens(tokens) {}

    CK_RV initialize();
    CK_RV finalize();
    CK_RV slotList(CK_SLOT_ID* slots, CK_ULONG* count);
    CK_RV tokenInfo(const StatefulCall& call, CK_TOKEN_INFO* info);
    /// @param call  receives the session.
    CK_RV open(StatefulCall* call);
    CK_RV close(CK_SESSION_HANDLE session);

    CK_RV login(ModuleSession& session, CK_USER_TYPE user, const CK_UTF8CHAR* pin, CK_ULONG length);
    CK_RV logout(ModuleSession& session);
    CK_RV setPin(ModuleSession& session, const CK_UTF8CHAR* oldPin, CK_ULONG oldLength,
                 const CK_UTF8CHAR* newPin, CK_ULONG newLength);
    CK_RV findInit(ModuleSession& session, const CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV find(ModuleSession& session, CK_OBJECT_HANDLE* object, CK_ULONG* count);
    CK_RV findFinal(ModuleSession& session);
    CK_RV signInit(ModuleSession& session, CK_OBJECT_HANDLE key);
    CK_RV sign(ModuleSession& session, const std::string& data, CK_BYTE* signature,
               CK_ULONG* length);
    CK_RV verifyInit(ModuleSession& session, CK_OBJECT_HANDLE key);
    CK_RV verify(ModuleSession& session, const std::string& data, const std::string& signature);

    /// Runs a call on a session between beginCall and endCall. A session that the module does not
    /// have is a misuse, unless the module lost it while beginCall ran.
    template <class Act>
    CK_RV call(const char* function, CK_SESSION_HANDLE handle, Act act) {
        const StatefulCall call = {function, 0, handle};
        unsigned long incarnation = 0;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            incarnation = m_incarnation;
            if (const char* const reason = whyNoSession(handle)) {
                m_tokens->reportMisuse(call, reason);
                return m_isInitialized ? CKR_SESSION_HANDLE_INVALID : CKR_CRYPTOKI_NOT_INITIALIZED;
            }
        }
        m_tokens->beginCall(call);
        CK_RV rv = CKR_CRYPTOKI_NOT_INITIALIZED;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (incarnation == m_incarnation && m_isInitialized) {
                const auto session = m_sessions.find(handle);
                rv =
                    session == m_sessions.end() ? CKR_SESSION_HANDLE_INVALID : act(session->second);
            }
        }
        m_tokens->endCall(call);
        return rv;
    }
    /// Runs C_Initialize or C_Finalize between beginCall and endCall.
    template <class Act>
    CK_RV change(const StatefulCall& call, Act act) {
        m_tokens->beginCall(call);
        CK_RV rv = CKR_OK;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            rv = act();
        }
        m_tokens->endCall(call);
        return rv;
    }
    /// Runs a call that names no session between beginCall and endCall. When the module is finalised
    /// meanwhile, the call fails without a misuse.
    template <class Act>
    CK_RV call(StatefulCall call, Act act) {
        bool wasInitialized = false;
        unsigned long incarnation = 0;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            wasInitialized = m_isInitialized;
            incarnation = m_incarnation;
        }
        m_tokens->beginCall(call);
        CK_RV rv = CKR_CRYPTOKI_NOT_INITIALIZED;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!wasInitialized || incarnation == m_incarnation) {
                rv = act(&call);
            }
        }
        m_tokens->endCall(call);
        return rv;
    }

    StatefulTokens* tokens() const { return m_tokens; }

private:
    const char* whyNoSession(CK_SESSION_HANDLE handle) const;
    bool hasSlot(CK_SLOT_ID slot) const;
    bool isUserLoggedIn(CK_ULONG token) const;
    std::string readKeyId(const ModuleSession& session, CK_OBJECT_HANDLE key) const;
    std::string serialOf(const ModuleSession& session) const;

    StatefulTokens* m_tokens;
    std::mutex m_mutex;
    bool m_isInitialized = false;
    /// How often the module was finalised since it was loaded.
    unsigned long m_incarnation = 0;
    CK_SESSION_HANDLE m_lastSession = 0;
    std::map<CK_SESSION_HANDLE, ModuleSession> m_sessions;
    std::map<CK_ULONG, CK_USER_TYPE> m_loggedIn;
};

}  // namespace zr::test
