// KeyObject_pkcs11: what the token tells about itself.
#include <cstring>

#include "model/log_scope.h"
#include "pkcs11/key_object.h"
#include "pkcs11/text_out.h"
#include "runtime/zcom_variant.h"

/// Reads a fixed-width text field of the token information, without the blanks and zeros at its
/// end; the blanks inside it stay.
HRESULT KeyObject_pkcs11::ReadTextField(const char* operation,
                                        CK_UTF8CHAR* (*field)(CK_TOKEN_INFO*), std::size_t width,
                                        BSTR* out, unsigned int line) {
    const LogScope scope(GetLog(), operation, line);
    if (!out) {
        return E_INVALIDARG;
    }
    CK_TOKEN_INFO info = {};
    if (Call(&CK_FUNCTIONS::C_GetTokenInfo, m_ulSlotID, &info) != CKR_OK) {
        return E_FAIL;
    }
    const CK_UTF8CHAR* bytes = field(&info);
    std::size_t length = width;
    while (length > 0 && (bytes[length - 1] == 0 || bytes[length - 1] == ' ')) {
        --length;
    }
    char text[sizeof info.label + 1] = {};
    std::memcpy(text, bytes, length);
    const HRESULT hr = zr::handOutText(text, out);
    return FAILED(hr) ? hr : scope.end(S_OK, line);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetSerialNumber(BSTR* out) {
    return ReadTextField(
        "GetSerialNumber", [](CK_TOKEN_INFO* info) { return info->serialNumber; },
        sizeof CK_TOKEN_INFO::serialNumber, out);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetLabel(BSTR* out) {
    return ReadTextField(
        "GetLabel", [](CK_TOKEN_INFO* info) { return info->label; }, sizeof CK_TOKEN_INFO::label,
        out);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetManufacturerID(BSTR* out) {
    return ReadTextField(
        "GetManufacturerID", [](CK_TOKEN_INFO* info) { return info->manufacturerID; },
        sizeof CK_TOKEN_INFO::manufacturerID, out);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetModelID(BSTR* out) {
    return ReadTextField(
        "GetModelID", [](CK_TOKEN_INFO* info) { return info->model; }, sizeof CK_TOKEN_INFO::model,
        out);
}

HRESULT KeyObject_pkcs11::ReadMemorySize(const char* operation, CK_ULONG CK_TOKEN_INFO::*size,
                                         VARIANT* result, unsigned int line) {
    const LogScope scope(GetLog(), operation, line);
    if (!result) {
        return E_INVALIDARG;
    }
    CK_TOKEN_INFO info = {};
    if (Call(&CK_FUNCTIONS::C_GetTokenInfo, m_ulSlotID, &info) != CKR_OK) {
        return E_FAIL;
    }
    const CK_ULONG bytes = info.*size;
    const HRESULT hr = zrapi::ZComVariant(bytes).Detach(result);
    return FAILED(hr) ? hr : scope.end(S_OK, line);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetTotalSize(VARIANT* result) {
    return ReadMemorySize("GetTotalSize", &CK_TOKEN_INFO::ulTotalPublicMemory, result);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetFreeSize(VARIANT* result) {
    return ReadMemorySize("GetFreeSize", &CK_TOKEN_INFO::ulFreePublicMemory, result);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::SetLabel(BSTR*, VARIANT*) {
    return NotImplemented("SetLabel");
}

// This backend has no such values: success, and the string stays as the host preset it.

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
