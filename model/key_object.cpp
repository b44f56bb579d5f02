// KeyObject: lifetime, reference counts and the operations without a backend.
#include "model/key_object.h"

#include "model/logged_references.h"
#include "model/token_provider.h"

KeyObject::KeyObject(TokenProvider* provider) : m_pTokenProvider(provider) {
    if (m_pTokenProvider) {
        m_pTokenProvider->AddRef();
    }
}

KeyObject::~KeyObject() {
    if (m_pTokenProvider) {
        m_pTokenProvider->Release();
        m_pTokenProvider = nullptr;
    }
}

const ZRLog* KeyObject::GetLog() const {
    return m_pTokenProvider ? m_pTokenProvider->GetLog() : nullptr;
}

ULONG STDMETHODCALLTYPE KeyObject::AddRef() {
    return zr::addRefLogged(*this, GetLog(), "KeyObject", "call...");
}

ULONG STDMETHODCALLTYPE KeyObject::Release() {
    return zr::releaseLogged(*this, GetLog(), "KeyObject");
}

HRESULT STDMETHODCALLTYPE KeyObject::GetSerialNumber(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::SetLabel(BSTR*, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetLabel(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetManufacturerID(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetModelID(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetTotalSize(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetFreeSize(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::ModifyPIN(BSTR, BSTR, INT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetMaxRetryCount(INT, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetRemainRetryCount(INT, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::IsDefaultPIN(INT, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::VerifyPIN(BSTR, INT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::UnlockPIN(BSTR, BSTR) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::Lock(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::Unlock(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::CreateFile(BSTR, INT, INT, INT, ULONG, void**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::FileExists(BSTR, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::OpenFile(BSTR, void**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::EnumFiles(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::DeleteFile(BSTR) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetDigestMethod(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::CreateContainer(BSTR, void**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetContainerCount(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::OpenContainer(VARIANT, void**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::DeleteContainer(VARIANT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetCertData(IKeyCertificate*, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetPubKeyData(IKeyCertificate*, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::VerifyData(VARIANT, IKeyCertificate*, BSTR, VARIANT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetSignAlgo(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::GetZRHardApiInfo(void**, BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::CloseKey() {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::DigestData(VARIANT, BSTR, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyObject::EnumContainer(VARIANT*) {
    return E_NOTIMPL;
}
