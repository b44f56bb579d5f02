// TokenProvider_pkcs11: lifetime, counting and opening tokens.
#include "pkcs11/provider_pkcs11.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "model/log_scope.h"
#include "pkcs11/text_out.h"
#include "pkcs11/token_pkcs11.h"

namespace {

// No machine has that many slots; do not allocate memory for an impossible count.
constexpr CK_ULONG kMostSlots = 1UL << 20;

}  // namespace

TokenProvider_pkcs11::TokenProvider_pkcs11() {
    const LogScope scope(GetLog(), "TokenProvider_pkcs11");
    scope.end();
}

TokenProvider_pkcs11::~TokenProvider_pkcs11() {
    const LogScope scope(GetLog(), "~TokenProvider_pkcs11");
    scope.end();
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::GetName(BSTR* name) {
    const LogScope scope(GetLog(), "GetName");
    if (!name) {
        return E_INVALIDARG;
    }
    return scope.endOnSuccess(zr::handOutText("PKCS#11", name));
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::GetKeySN(LONG, BSTR*) {
    // The out argument keeps what the host stored in it: a token reports its serial number itself.
    const LogScope scope(GetLog(), "GetKeySN");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::GetKeyCount(INT* count) {
    const LogScope scope(GetLog(), "GetKeyCount");
    if (!count) {
        return E_INVALIDARG;
    }
    *count = 0;
    CK_ULONG slots = 0;
    const Session session(m_pModule);
    if (session.Call(&CK_FUNCTIONS::C_GetSlotList, CK_TRUE, nullptr, &slots) != CKR_OK) {
        return E_FAIL;
    }
    *count = static_cast<INT>(slots);
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::OpenKey(LONG index, void** key) {
    const LogScope scope(GetLog(), "OpenKey");
    if (index < 0 || !key) {
        return E_INVALIDARG;
    }
    const auto wanted = static_cast<CK_ULONG>(index);
    CK_ULONG count = 0;
    // Made before the first call: if the module is unloaded during one, it and all later ones fail.
    Session session(m_pModule);
    if (session.Call(&CK_FUNCTIONS::C_GetSlotList, CK_TRUE, nullptr, &count) != CKR_OK ||
        wanted >= count) {
        return E_FAIL;
    }
    const std::unique_ptr<CK_SLOT_ID[], decltype(&std::free)> slots(
        count <= kMostSlots ? static_cast<CK_SLOT_ID*>(std::calloc(count, sizeof(CK_SLOT_ID)))
                            : nullptr,
        std::free);
    if (!slots) {
        return E_FAIL;
    }
    if (session.Call(&CK_FUNCTIONS::C_GetSlotList, CK_TRUE, slots.get(), &count) != CKR_OK ||
        wanted >= count) {
        // The slots changed meanwhile, or the call failed. Hosts detect this by the null pointer, so
        // S_OK is kept.
        return S_OK;
    }
    void* application = nullptr;
    CK_SESSION_HANDLE handle = 0;
    if (session.Call(&CK_FUNCTIONS::C_OpenSession, slots[wanted],
                     CKF_SERIAL_SESSION | CKF_RW_SESSION, &application, nullptr,
                     &handle) != CKR_OK) {
        return E_FAIL;
    }
    auto* token = new (std::nothrow) KeyObject_pkcs11(this, std::move(session));
    if (!token) {
        // The session stays open until Unload: no other call is made after C_OpenSession.
        return E_OUTOFMEMORY;
    }
    token->SetSlotID(slots[wanted]);
    // The token frees its application pointer; what the module stored in ours is not ours to free.
    token->SetApplication(nullptr);
    token->SethSession(handle);
    token->SetAlgoList(m_szAlgoList);
    token->SetDigestList(m_szDigestList);
    *key = static_cast<IKeyObject*>(token);
    token->AddRef();
    return scope.end(S_OK);
}
