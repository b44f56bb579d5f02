// KeyObject_pkcs11: login and PINs. The PIN of the last login is kept as long as the token object.
#include "model/log_scope.h"
#include "pkcs11/token_pkcs11.h"
#include "runtime/secret.h"

namespace {

constexpr std::size_t kShortestPin = 4;
constexpr std::size_t kLongestPin = 8;
constexpr std::size_t kOldPinSize = 16;
constexpr std::size_t kNewPinSize = 9;

template <std::size_t Size>
bool hasPinLength(const zr::SecretText<Size>& pin) {
    return pin.fits() && pin.length() >= kShortestPin && pin.length() <= kLongestPin;
}

/// Cryptoki takes PINs by a pointer to writable bytes, but does not write to them.
template <std::size_t Size>
CK_UTF8CHAR* pinBytes(const zr::SecretText<Size>& pin) {
    return reinterpret_cast<CK_UTF8CHAR*>(const_cast<char*>(pin.c_str()));
}

}  // namespace

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::VerifyPIN(BSTR pin, INT type) {
    const LogScope scope(GetLog(), "VerifyPIN");
    if (type != 0 && type != 1) {
        return E_INVALIDARG;
    }
    const CK_USER_TYPE user = type == 0 ? CKU_USER : CKU_SO;
    m_bLogin = 0;
    const zr::SecretText<StoredPin::kSize> text(pin);
    // Reject here: sent as an empty PIN it would cost a retry.
    if (!pin || !text.fits()) {
        return E_FAIL;
    }
    const auto login = [&] {
        // A copy for each call: a module may overwrite the PIN it is handed.
        const zr::SecretText<StoredPin::kSize> handed(pin);
        return m_session.Call(&CK_FUNCTIONS::C_Login, m_session.handle(), user, pinBytes(handed),
                              static_cast<CK_ULONG>(handed.length()));
    };
    CK_RV rv = login();
    if (rv == CKR_USER_ALREADY_LOGGED_IN) {
        m_session.Call(&CK_FUNCTIONS::C_Logout, m_session.handle());
        rv = login();
        if (rv == CKR_USER_ALREADY_LOGGED_IN) {
            rv = CKR_OK;
        }
    }
    if (rv != CKR_OK) {
        return E_FAIL;
    }
    m_bLogin = 1;
    m_nLoginType = type;
    m_pin.store(text.c_str());
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::ModifyPIN(BSTR oldPin, BSTR newPin, INT type) {
    const LogScope scope(GetLog(), "ModifyPIN");
    const zr::SecretText<kOldPinSize> oldText(oldPin);
    const zr::SecretText<kNewPinSize> newText(newPin);
    if (!hasPinLength(oldText) || !hasPinLength(newText)) {
        return E_INVALIDARG;
    }
    if (m_bLogin) {
        m_session.Call(&CK_FUNCTIONS::C_Logout, m_session.handle());
        m_bLogin = 0;
    }
    if (FAILED(VerifyPIN(oldPin, type))) {
        return E_FAIL;
    }
    // m_pin keeps the old PIN; nothing reads it.
    if (m_session.Call(&CK_FUNCTIONS::C_SetPIN, m_session.handle(), pinBytes(oldText),
                       static_cast<CK_ULONG>(oldText.length()), pinBytes(newText),
                       static_cast<CK_ULONG>(newText.length())) != CKR_OK) {
        return E_FAIL;
    }
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::UnlockPIN(BSTR, BSTR) {
    // Nothing is unlocked. Hosts rely on S_OK.
    const LogScope scope(GetLog(), "UnlockPIN");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetMaxRetryCount(INT, VARIANT*) {
    const LogScope scope(GetLog(), "GetMaxRetryCount");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetRemainRetryCount(INT, VARIANT*) {
    const LogScope scope(GetLog(), "GetRemainRetryCount");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::IsDefaultPIN(INT, VARIANT*) {
    const LogScope scope(GetLog(), "IsDefaultPIN");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::Lock(VARIANT*) {
    const LogScope scope(GetLog(), "Lock");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::Unlock(VARIANT*) {
    const LogScope scope(GetLog(), "Unlock");
    return scope.end(E_NOTIMPL);
}
