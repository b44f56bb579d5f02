// TokenProvider: lifetime, reference counts and its own identifier.
#include "model/token_provider.h"

#include <new>

#include "model/log_scope.h"

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
    const ULONG references = ZComponentImpl::AddRef();
    LogScope::withoutBegin(m_pLog, "AddRef").count("[TokenProvider::AddRef] count=", references);
    return references;
}

ULONG STDMETHODCALLTYPE TokenProvider::Release() {
    // The last release may destroy the logger as well.
    const ZRLog log = ZRLog::copyOf(m_pLog);
    const LogScope scope = LogScope::withoutBegin(&log, "Release");
    scope.message("[TokenProvider::Release] call...\n");
    const ULONG references = ZComponentImpl::Release();
    scope.count("[TokenProvider::Release] count=", references);
    return references;
}
