// KeyObject_pkcs11: what the token reports about itself.
#include <cstring>

#include "model/log_scope.h"
#include "pkcs11/text_out.h"
#include "pkcs11/token_pkcs11.h"
#include "runtime/zcom_variant.h"

/// Reads a fixed-width text field of the token information, without the blanks and zeros at its
/// end; the blanks inside it stay.
template <std::size_t Width>
HRESULT KeyObject_pkcs11::ReadTextField(CK_UTF8CHAR (CK_TOKEN_INFO::*field)[Width],
                                        BSTR* out) const {
    if (!out) {
        return E_INVALIDARG;
    }
    CK_TOKEN_INFO info = {};
    if (m_session.Call(&CK_FUNCTIONS::C_GetTokenInfo, m_session.slot(), &info) != CKR_OK) {
        return E_FAIL;
    }
    const CK_UTF8CHAR* bytes = info.*field;
    std::size_t length = Width;
    while (length > 0 && (bytes[length - 1] == 0 || bytes[length - 1] == ' ')) {
        --length;
    }
    char text[Width + 1] = {};
    std::memcpy(text, bytes, length);
    return zr::handOutText(text, out);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetSerialNumber(BSTR* out) {
    const LogScope scope(GetLog(), "GetSerialNumber");
    return scope.endOnSuccess(ReadTextField(&CK_TOKEN_INFO::serialNumber, out));
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetLabel(BSTR* out) {
    const LogScope scope(GetLog(), "GetLabel");
    return scope.endOnSuccess(ReadTextField(&CK_TOKEN_INFO::label, out));
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetManufacturerID(BSTR* out) {
    const LogScope scope(GetLog(), "GetManufacturerID");
    return scope.endOnSuccess(ReadTextField(&CK_TOKEN_INFO::manufacturerID, out));
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetModelID(BSTR* out) {
    const LogScope scope(GetLog(), "GetModelID");
    return scope.endOnSuccess(ReadTextField(&CK_TOKEN_INFO::model, out));
}

HRESULT KeyObject_pkcs11::ReadMemorySize(CK_ULONG CK_TOKEN_INFO::*size, VARIANT* result) const {
    if (!result) {
        return E_INVALIDARG;
    }
    CK_TOKEN_INFO info = {};
    if (m_session.Call(&CK_FUNCTIONS::C_GetTokenInfo, m_session.slot(), &info) != CKR_OK) {
        return E_FAIL;
    }
    const CK_ULONG bytes = info.*size;
    return zrapi::ZComVariant(bytes).Detach(result);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetTotalSize(VARIANT* result) {
    const LogScope scope(GetLog(), "GetTotalSize");
    return scope.endOnSuccess(ReadMemorySize(&CK_TOKEN_INFO::ulTotalPublicMemory, result));
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetFreeSize(VARIANT* result) {
    const LogScope scope(GetLog(), "GetFreeSize");
    return scope.endOnSuccess(ReadMemorySize(&CK_TOKEN_INFO::ulFreePublicMemory, result));
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::SetLabel(BSTR*, VARIANT*) {
    const LogScope scope(GetLog(), "SetLabel");
    return scope.end(E_NOTIMPL);
}

// This backend has no such values. Hosts get S_OK and keep the string that they preset.

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetKeyObjectClassName(BSTR*) {
    const LogScope scope(GetLog(), "GetKeyObjectClassName");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetCaLibPath(BSTR*) {
    const LogScope scope(GetLog(), "GetCaLibPath");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetCSPName(BSTR*) {
    const LogScope scope(GetLog(), "GetCSPName");
    return scope.end(S_OK);
}
