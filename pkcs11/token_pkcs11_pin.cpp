// KeyObject_pkcs11: login and PINs. The library keeps no PIN longer than the token object.
#include <cstring>

#include "model/log_scope.h"
#include "pkcs11/key_object.h"
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

/// Cryptoki takes PINs by a pointer to writable bytes and leaves them alone.
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
    const zr::SecretText<sizeof m_szPIN> text(pin);
    // A PIN that is none must not use up a try as the empty one.
    if (!pin || !text.fits()) {
        return E_FAIL;
    }
    const auto login = [&] {
        // A copy each time: a module may write into what it is handed.
        const zr::SecretText<sizeof m_szPIN> handed(pin);
        return Call(&CK_FUNCTIONS::C_Login, m_hSession, user, pinBytes(handed),
                    static_cast<CK_ULONG>(handed.length()));
    };
    CK_RV rv = login();
    if (rv == CKR_USER_ALREADY_LOGGED_IN) {
        Call(&CK_FUNCTIONS::C_Logout, m_hSession);
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
    std::memcpy(m_szPIN, text.c_str(), sizeof m_szPIN);
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
        Call(&CK_FUNCTIONS::C_Logout, m_hSession);
        m_bLogin = 0;
    }
    if (FAILED(VerifyPIN(oldPin, type))) {
        return E_FAIL;
    }
    // The PIN stored at login stays the old one; nothing reads it.
    if (Call(&CK_FUNCTIONS::C_SetPIN, m_hSession, pinBytes(oldText),
             static_cast<CK_ULONG>(oldText.length()), pinBytes(newText),
             static_cast<CK_ULONG>(newText.length())) != CKR_OK) {
        return E_FAIL;
    }
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::UnlockPIN(BSTR, BSTR) {
    // Nothing is unlocked; hosts have always been told S_OK.
    const LogScope scope(GetLog(), "UnlockPIN");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetMaxRetryCount(INT, VARIANT*) {
    return NotImplemented("GetMaxRetryCount");
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetRemainRetryCount(INT, VARIANT*) {
    return NotImplemented("GetRemainRetryCount");
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::IsDefaultPIN(INT, VARIANT*) {
    return NotImplemented("IsDefaultPIN");
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::Lock(VARIANT*) {
    return NotImplemented("Lock");
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::Unlock(VARIANT*) {
    return NotImplemented("Unlock");
}
