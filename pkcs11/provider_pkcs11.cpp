// TokenProvider_pkcs11: lifetime, counting and opening tokens.
#include "pkcs11/token_provider.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "model/log_scope.h"
#include "pkcs11/key_object.h"
#include "pkcs11/text_out.h"
#include "runtime/class_factory.h"

namespace {

// No machine has as many slots: memory is not spent on a count that cannot be true.
constexpr CK_ULONG kMostSlots = 1UL << 20;

}  // namespace

ITokenProvider* zr::makeTokenProvider() {
    return new (std::nothrow) TokenProvider_pkcs11();
}

TokenProvider_pkcs11::TokenProvider_pkcs11() {
    const LogScope scope(GetLog(), "TokenProvider_pkcs11");
    scope.end();
}

TokenProvider_pkcs11::~TokenProvider_pkcs11() {
    const LogScope scope(GetLog(), "~TokenProvider_pkcs11");
    scope.end();
    DropFunctionTable();
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::GetName(BSTR* name) {
    const LogScope scope(GetLog(), "GetName");
    if (!name) {
        return E_INVALIDARG;
    }
    const HRESULT hr = zr::handOutText("PKCS#11", name);
    return FAILED(hr) ? hr : scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::GetKeySN(LONG, BSTR*) {
    // Serial numbers are the tokens' to tell; hosts get the string they preset.
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
    if (Call(&CK_FUNCTIONS::C_GetSlotList, CK_TRUE, nullptr, &slots) != CKR_OK) {
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
    if (Call(&CK_FUNCTIONS::C_GetSlotList, CK_TRUE, nullptr, &count) != CKR_OK || wanted >= count) {
        return E_FAIL;
    }
    const std::unique_ptr<CK_SLOT_ID[], decltype(&std::free)> slots(
        count <= kMostSlots ? static_cast<CK_SLOT_ID*>(std::calloc(count, sizeof(CK_SLOT_ID)))
                            : nullptr,
        std::free);
    if (!slots) {
        return E_FAIL;
    }
    if (Call(&CK_FUNCTIONS::C_GetSlotList, CK_TRUE, slots.get(), &count) != CKR_OK ||
        wanted >= count) {
        // The slots changed between the calls: hosts see it by the still-null pointer alone.
        return S_OK;
    }
    void* application = nullptr;
    CK_SESSION_HANDLE session = 0;
    if (Call(&CK_FUNCTIONS::C_OpenSession, slots[wanted], CKF_SERIAL_SESSION | CKF_RW_SESSION,
             &application, nullptr, &session) != CKR_OK) {
        return E_FAIL;
    }
    auto* token = new (std::nothrow) KeyObject_pkcs11(this);
    if (!token) {
        return E_OUTOFMEMORY;
    }
    token->SetSlotID(slots[wanted]);
    // The token would free what it is handed; whatever a module stored there is not the library's.
    token->SetApplication(nullptr);
    token->SethSession(session);
    token->SetAlgoList(m_szAlgoList);
    token->SetDigestList(m_szDigestList);
    *key = static_cast<IKeyObject*>(token);
    token->AddRef();
    return scope.end(S_OK);
}
