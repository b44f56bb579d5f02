// KeyContainer: lifetime and the operations without a backend.
#include "model/key_container.h"

#include "model/key_object.h"

KeyContainer::KeyContainer(KeyObject* token) : m_pKeyObject(token) {
    if (m_pKeyObject) {
        m_pKeyObject->AddRef();
    }
}

KeyContainer::~KeyContainer() {
    if (m_pKeyObject) {
        m_pKeyObject->Release();
        m_pKeyObject = nullptr;
    }
}

HRESULT STDMETHODCALLTYPE KeyContainer::Close() {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer::GetType(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer::ImportCertificate(bool, VARIANT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer::ExportCertificate(bool, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer::GenKeyPair(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer::GetKeyCert(bool, void**) {
    return E_NOTIMPL;
}
