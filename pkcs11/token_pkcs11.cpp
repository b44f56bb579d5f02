// KeyObject_pkcs11: lifetime, and what the provider hands over.
#include "pkcs11/token_pkcs11.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "model/cast_parent.h"
#include "model/log_scope.h"

namespace {

/// Copies a list whole; one that does not fit is refused.
template <std::size_t Size>
void setList(char (&list)[Size], const char* text, const char* name, const LogScope& scope,
             unsigned int sourceLine = __builtin_LINE()) {
    if (text && std::strlen(text) < Size) {
        std::memmove(list, text, std::strlen(text) + 1);
    }
    char line[1024] = {};
    std::snprintf(line, sizeof line, "KeyObject_pkcs11::%s=[%s]\n", name, list);
    scope.message(line, sourceLine);
}

}  // namespace

KeyObject_pkcs11::KeyObject_pkcs11(TokenProvider* provider, Session session)
    : KeyObject(provider), m_session(std::move(session)) {
    const LogScope scope(GetLog(), "KeyObject_pkcs11");
    scope.end();
}

KeyObject_pkcs11::~KeyObject_pkcs11() {
    const LogScope scope(GetLog(), "~KeyObject_pkcs11");
    scope.end();
}

TokenProvider_pkcs11* KeyObject_pkcs11::GetTokenProvider() const {
    return zr::castParent<TokenProvider_pkcs11>(GetParent());
}

HRESULT KeyObject_pkcs11::SetSlotID(CK_SLOT_ID slot) {
    const LogScope scope(GetLog(), "SetSlotID");
    m_session.setSlot(slot);
    return scope.end(S_OK);
}

HRESULT KeyObject_pkcs11::SetApplication(void* application) {
    const LogScope scope(GetLog(), "SetApplication");
    m_pApplication = application;
    return scope.end(S_OK);
}

HRESULT KeyObject_pkcs11::SethSession(CK_SESSION_HANDLE session) {
    const LogScope scope(GetLog(), "SethSession");
    m_session.setHandle(session);
    return scope.end(S_OK);
}

BOOL KeyObject_pkcs11::SetAlgoList(const char* text) {
    setList(m_szAlgoList, text, "m_szAlgoList", LogScope::withoutBegin(GetLog(), "SetAlgoList"));
    return TRUE;
}

BOOL KeyObject_pkcs11::SetDigestList(const char* text) {
    setList(m_szDigestList, text, "m_szDigestList",
            LogScope::withoutBegin(GetLog(), "SetDigestList"));
    return TRUE;
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::CloseKey() {
    const LogScope scope(GetLog(), "CloseKey");
    if (m_bLogin) {
        m_session.Call(&CK_FUNCTIONS::C_Logout, m_session.handle());
        m_bLogin = 0;
    }
    if (m_session.handle() != 0) {
        m_session.Call(&CK_FUNCTIONS::C_CloseSession, m_session.handle());
        m_session.setHandle(0);
    }
    m_pin.wipe();
    if (m_pApplication) {
        std::free(m_pApplication);
        m_pApplication = nullptr;
    }
    return scope.end(S_OK);
}

void KeyObject_pkcs11::FinalRelease() {
    const LogScope scope(GetLog(), "FinalRelease");
    CloseKey();
    scope.end();
}
