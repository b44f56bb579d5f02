// KeyContainer_pkcs11: method table and adapter.
#include <iterator>

#include "pkcs11/container_pkcs11.h"

DispatchInfo KeyContainer_pkcs11::s_listDispatchInfo[] = {
    {1, "GetKeyCert", enDispatchMethod, nullptr, VT_DISPATCH, {11}},
    {},
};

const int KeyContainer_pkcs11::s_nDispatchInfoCount = std::size(s_listDispatchInfo) - 1;

const bool KeyContainer_pkcs11::s_bAdaptersStored =
    zr::storeAdapters<KeyContainer_pkcs11>(s_listDispatchInfo, {&KeyContainer_pkcs11::_GetKeyCert});

HRESULT KeyContainer_pkcs11::_GetKeyCert(DISPPARAMS* params, VARIANT* result) {
    if (!result) {
        return E_INVALIDARG;
    }
    const bool signing = params && params->cArgs > 0 && params->rgvarg &&
                         params->rgvarg[0].vt == VT_BOOL && params->rgvarg[0].boolVal != 0;
    void* certificate = nullptr;
    const HRESULT hr = GetKeyCert(signing, &certificate);
    if (SUCCEEDED(hr)) {
        result->vt = VT_DISPATCH;
        result->pdispVal = static_cast<IKeyCertificate*>(certificate);
    }
    return hr;
}
