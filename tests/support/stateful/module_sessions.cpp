// The state of a stateful Cryptoki module between C_Initialize and C_Finalize.
#include "tests/support/stateful/module_sessions.h"

#include <algorithm>
#include <cstring>

#include "tests/support/stateful/signature.h"

namespace zr::test {

CK_RV ModuleSessions::initialize() {
    if (m_isInitialized) {
        return CKR_CRYPTOKI_ALREADY_INITIALIZED;
    }
    m_isInitialized = true;
    m_tokens->setInitialized(true);
    return CKR_OK;
}

/// Forgets every session. The numbers of sessions start again at 1, as in real modules.
CK_RV ModuleSessions::finalize() {
    if (!m_isInitialized) {
        return CKR_CRYPTOKI_NOT_INITIALIZED;
    }
    m_isInitialized = false;
    m_tokens->setInitialized(false);
    ++m_incarnation;
    m_lastSession = 0;
    m_sessions.clear();
    m_loggedIn.clear();
    return CKR_OK;
}

CK_RV ModuleSessions::slotList(CK_SLOT_ID* slots, CK_ULONG* count) {
    if (!m_isInitialized) {
        return CKR_CRYPTOKI_NOT_INITIALIZED;
    }
    const CK_ULONG present = m_tokens->count();
    for (CK_ULONG i = 0; slots && i < *count && i < present; ++i) {
        slots[i] = kFirstSlot + i;
    }
    *count = present;
    return CKR_OK;
}

bool ModuleSessions::hasSlot(CK_SLOT_ID slot) const {
    return slot >= kFirstSlot && slot - kFirstSlot < m_tokens->count();
}

CK_RV ModuleSessions::tokenInfo(const StatefulCall& call, CK_TOKEN_INFO* info) {
    if (!m_isInitialized) {
        m_tokens->reportMisuse(call, "the module is not initialised");
        return CKR_CRYPTOKI_NOT_INITIALIZED;
    }
    if (!hasSlot(call.slot)) {
        return CKR_SLOT_ID_INVALID;
    }
    m_tokens->describe(call.slot - kFirstSlot, info);
    return CKR_OK;
}

CK_RV ModuleSessions::open(StatefulCall* call) {
    if (!m_isInitialized) {
        m_tokens->reportMisuse(*call, "the module is not initialised");
        return CKR_CRYPTOKI_NOT_INITIALIZED;
    }
    if (!hasSlot(call->slot)) {
        return CKR_SLOT_ID_INVALID;
    }
    call->session = ++m_lastSession;
    m_sessions[call->session].token = call->slot - kFirstSlot;
    return CKR_OK;
}

CK_RV ModuleSessions::close(CK_SESSION_HANDLE session) {
    const CK_ULONG token = m_sessions[session].token;
    m_sessions.erase(session);
    const bool isLast = std::none_of(m_sessions.begin(), m_sessions.end(), [&](const auto& entry) {
        return entry.second.token == token;
    });
    if (isLast) {
        m_loggedIn.erase(token);
    }
    return CKR_OK;
}

const char* ModuleSessions::whyNoSession(CK_SESSION_HANDLE handle) const {
    if (!m_isInitialized) {
        return "the module is not initialised";
    }
    return m_sessions.count(handle) ? nullptr : "there is no such session";
}

CK_RV ModuleSessions::login(ModuleSession& session, CK_USER_TYPE user, const CK_UTF8CHAR* pin,
                            CK_ULONG length) {
    if (m_loggedIn.count(session.token)) {
        return CKR_USER_ALREADY_LOGGED_IN;
    }
    if (!m_tokens->isPin(session.token, user, pin, length)) {
        return CKR_PIN_INCORRECT;
    }
    m_loggedIn[session.token] = user;
    return CKR_OK;
}

CK_RV ModuleSessions::logout(ModuleSession& session) {
    return m_loggedIn.erase(session.token) ? CKR_OK : CKR_USER_NOT_LOGGED_IN;
}

CK_RV ModuleSessions::setPin(ModuleSession& session, const CK_UTF8CHAR* oldPin, CK_ULONG oldLength,
                             const CK_UTF8CHAR* newPin, CK_ULONG newLength) {
    const auto user = m_loggedIn.find(session.token);
    if (user == m_loggedIn.end()) {
        return CKR_USER_NOT_LOGGED_IN;
    }
    if (!m_tokens->isPin(session.token, user->second, oldPin, oldLength)) {
        return CKR_PIN_INCORRECT;
    }
    m_tokens->setPin(session.token, user->second, newPin, newLength);
    return CKR_OK;
}

bool ModuleSessions::isUserLoggedIn(CK_ULONG token) const {
    const auto user = m_loggedIn.find(token);
    return user != m_loggedIn.end() && user->second == CKU_USER;
}

/// Finds all objects at once. Private keys are there for a logged-in user only.
CK_RV ModuleSessions::findInit(ModuleSession& session, const CK_ATTRIBUTE* attributes,
                               CK_ULONG count) {
    if (session.isSearchOpen && m_tokens->isSearchExclusive()) {
        return CKR_OPERATION_ACTIVE;
    }
    session.isSearchOpen = true;
    session.found.clear();
    CK_OBJECT_HANDLE object = 0;
    while ((object = m_tokens->findAfter(session.token, object, attributes, count)) != 0) {
        CK_OBJECT_CLASS objectClass = 0;
        CK_ATTRIBUTE read = {CKA_CLASS, &objectClass, sizeof objectClass};
        m_tokens->read(session.token, object, &read, 1);
        if (objectClass != CKO_PRIVATE_KEY || isUserLoggedIn(session.token)) {
            session.found.push_back(object);
        }
    }
    return CKR_OK;
}

CK_RV ModuleSessions::find(ModuleSession& session, CK_OBJECT_HANDLE* object, CK_ULONG* count) {
    if (!session.isSearchOpen) {
        return CKR_OPERATION_NOT_INITIALIZED;
    }
    *count = session.found.empty() ? 0 : 1;
    if (!session.found.empty()) {
        *object = session.found.front();
        session.found.erase(session.found.begin());
    }
    return CKR_OK;
}

CK_RV ModuleSessions::findFinal(ModuleSession& session) {
    if (!session.isSearchOpen) {
        return CKR_OPERATION_NOT_INITIALIZED;
    }
    session.isSearchOpen = false;
    return CKR_OK;
}

std::string ModuleSessions::readKeyId(const ModuleSession& session, CK_OBJECT_HANDLE key) const {
    char id[256];
    CK_ATTRIBUTE read = {CKA_ID, id, sizeof id};
    return m_tokens->read(session.token, key, &read, 1) == CKR_OK ? std::string(id, read.ulValueLen)
                                                                  : std::string();
}

std::string ModuleSessions::serialOf(const ModuleSession& session) const {
    CK_TOKEN_INFO info;
    m_tokens->describe(session.token, &info);
    return {reinterpret_cast<const char*>(info.serialNumber), sizeof info.serialNumber};
}

CK_RV ModuleSessions::signInit(ModuleSession& session, CK_OBJECT_HANDLE key) {
    if (!isUserLoggedIn(session.token)) {
        return CKR_USER_NOT_LOGGED_IN;
    }
    if (session.isSigning) {
        return CKR_OPERATION_ACTIVE;
    }
    session.isSigning = true;
    session.signingKey = readKeyId(session, key);
    return CKR_OK;
}

CK_RV ModuleSessions::sign(ModuleSession& session, const std::string& data, CK_BYTE* signature,
                           CK_ULONG* length) {
    if (!session.isSigning) {
        return CKR_OPERATION_NOT_INITIALIZED;
    }
    const std::string made = signatureOf(serialOf(session), session.signingKey, data);
    if (*length < made.size()) {
        *length = static_cast<CK_ULONG>(made.size());
        return CKR_BUFFER_TOO_SMALL;
    }
    session.isSigning = false;
    *length = static_cast<CK_ULONG>(made.size());
    std::memcpy(signature, made.data(), made.size());
    return CKR_OK;
}

CK_RV ModuleSessions::verifyInit(ModuleSession& session, CK_OBJECT_HANDLE key) {
    if (session.isVerifying) {
        return CKR_OPERATION_ACTIVE;
    }
    session.isVerifying = true;
    session.verifyingKey = readKeyId(session, key);
    return CKR_OK;
}

CK_RV ModuleSessions::verify(ModuleSession& session, const std::string& data,
                             const std::string& signature) {
    if (!session.isVerifying) {
        return CKR_OPERATION_NOT_INITIALIZED;
    }
    session.isVerifying = false;
    return signature == signatureOf(serialOf(session), session.verifyingKey, data)
               ? CKR_OK
               : CKR_SIGNATURE_INVALID;
}

}  // namespace zr::test
