// KeyObject: lifetime, reference counts, and access to the logger.
#include "model/key_object.h"

#include "model/log_scope.h"
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
    const ULONG references = ZComponentImpl::AddRef();
    LogScope::withoutBegin(GetLog(), "AddRef").count("[KeyObject::AddRef] call...", references);
    return references;
}

ULONG STDMETHODCALLTYPE KeyObject::Release() {
    // The last release may also destroy the logger.
    const ZRLog log = ZRLog::copyOf(GetLog());
    const LogScope scope = LogScope::withoutBegin(&log, "Release");
    scope.message("[KeyObject::Release] call...\n");
    const ULONG references = ZComponentImpl::Release();
    scope.count("[KeyObject::Release] count=", references);
    return references;
}
