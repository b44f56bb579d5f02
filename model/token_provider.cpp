// TokenProvider: lifetime, reference counts and the operations without a backend.
#include "model/token_provider.h"

#include <new>

#include "model/log_scope.h"
#include "model/logged_references.h"

TokenProvider::TokenProvider() : m_pLog(new (std::nothrow) ZRLog()) {
    EnableLog();
}

TokenProvider::~TokenProvider() {
    const LogScope scope(m_pLog, "~TokenProvider");
    scope.end();
    delete m_pLog;
    m_pLog = nullptr;
}

HRESULT STDMETHODCALLTYPE TokenProvider::QueryInterface(const GUID& riid, void** ppv) {
    if (ppv && riid == IID_ITokenProvider) {
        *ppv = static_cast<ITokenProvider*>(this);
    }
    return ZComponent<ITokenProvider>::QueryInterface(riid, ppv);
}

ULONG STDMETHODCALLTYPE TokenProvider::AddRef() {
    return zr::addRefLogged(*this, m_pLog, "TokenProvider", "count=");
}

ULONG STDMETHODCALLTYPE TokenProvider::Release() {
    return zr::releaseLogged(*this, m_pLog, "TokenProvider");
}

HRESULT STDMETHODCALLTYPE TokenProvider::Load(BSTR) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE TokenProvider::Unload() {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE TokenProvider::OpenKey(LONG, void**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE TokenProvider::GetName(BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE TokenProvider::GetKeyCount(INT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE TokenProvider::GetKeySN(LONG, BSTR*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE TokenProvider::LoadFinish(INT*) {
    return E_NOTIMPL;
}

void TokenProvider::FinalRelease() {
    Unload();
}
