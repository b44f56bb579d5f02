// KeyCertificate: lifetime, method table, adapters and the operations without a backend.
#include "model/key_certificate.h"

#include "model/key_container.h"
#include "runtime/dispatch_table.h"

KeyCertificate::KeyCertificate(KeyContainer* container) : m_pKeyContainer(container) {
    if (m_pKeyContainer) {
        m_pKeyContainer->AddRef();
    }
}

KeyCertificate::~KeyCertificate() {
    if (m_pKeyContainer) {
        m_pKeyContainer->Release();
        m_pKeyContainer = nullptr;
    }
}

DispatchInfo KeyCertificate::s_listDispatchInfo[] = {
    {1, "GetCertID", enDispatchMethod, nullptr, VT_BSTR, {}},
    {2, "GetCertData", enDispatchMethod, nullptr, VT_VARIANT, {}},
    {},
};

const int KeyCertificate::s_nDispatchInfoCount =
    sizeof s_listDispatchInfo / sizeof s_listDispatchInfo[0] - 1;

const bool KeyCertificate::s_bAdaptersStored =
    zr::storeAdapters<KeyCertificate>(s_listDispatchInfo, {
                                                              &KeyCertificate::_GetCertID,
                                                              &KeyCertificate::_GetCertData,
                                                          });

DispatchInfo* KeyCertificate::GetSelfDispatchInfo() {
    return s_listDispatchInfo;
}

int KeyCertificate::GetSelfGetDispatchInfoCount() {
    return s_nDispatchInfoCount;
}

DispatchInfo* KeyCertificate::GetDispatchInfo(ZComponentImpl*, const char* name) {
    return zr::findRow(s_listDispatchInfo, s_nDispatchInfoCount, name);
}

DispatchInfo* KeyCertificate::GetDispatchInfoById(ZComponentImpl*, LONG id) {
    return zr::findRow(s_listDispatchInfo, s_nDispatchInfoCount, id);
}

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

HRESULT STDMETHODCALLTYPE KeyCertificate::GetCertData(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyCertificate::GetCertID(BSTR*) {
    return E_NOTIMPL;
}
