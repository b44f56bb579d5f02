// KeyCertificate: method table and adapters.
#include <iterator>

#include "model/key_certificate.h"

DispatchInfo KeyCertificate::s_listDispatchInfo[] = {
    {1, "GetCertID", enDispatchMethod, nullptr, VT_BSTR, {}},
    {2, "GetCertData", enDispatchMethod, nullptr, VT_VARIANT, {}},
    {},
};

const int KeyCertificate::s_nDispatchInfoCount = std::size(s_listDispatchInfo) - 1;

const bool KeyCertificate::s_bAdaptersStored =
    zr::storeAdapters<KeyCertificate>(s_listDispatchInfo, {
                                                              &KeyCertificate::_GetCertID,
                                                              &KeyCertificate::_GetCertData,
                                                          });

HRESULT KeyCertificate::_GetCertID(DISPPARAMS*, VARIANT* result) {
    if (!result) {
        return E_INVALIDARG;
    }
    BSTR id = nullptr;
    const HRESULT hr = GetCertID(&id);
    if (SUCCEEDED(hr)) {
        result->vt = VT_BSTR;
        result->bstrVal = id;
    }
    return hr;
}

HRESULT KeyCertificate::_GetCertData(DISPPARAMS*, VARIANT* result) {
    return GetCertData(result);
}
