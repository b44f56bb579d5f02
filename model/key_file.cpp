// KeyFile: lifetime and reference counts.
#include "model/key_file.h"

#include "model/key_object.h"
#include "model/log_scope.h"
KeyFile::KeyFile(KeyObject* token) : m_pKeyObject(token) {
    if (m_pKeyObject) {
        m_pKeyObject->AddRef();
    }
}

KeyFile::~KeyFile() {
    if (m_pKeyObject) {
        m_pKeyObject->Release();
        m_pKeyObject = nullptr;
    }
}

const ZRLog* KeyFile::GetLog() const {
    return m_pKeyObject ? m_pKeyObject->GetLog() : nullptr;
}

ULONG STDMETHODCALLTYPE KeyFile::AddRef() {
    const ULONG references = ZComponentImpl::AddRef();
    LogScope::withoutBegin(GetLog(), "AddRef").count("[KeyFile::AddRef] call...", references);
    return references;
}

ULONG STDMETHODCALLTYPE KeyFile::Release() {
    // The last release may destroy the logger as well.
    const ZRLog log = ZRLog::copyOf(GetLog());
    const LogScope scope = LogScope::withoutBegin(&log, "Release");
    scope.message("[KeyFile::Release] call...\n");
    const ULONG references = ZComponentImpl::Release();
    scope.count("[KeyFile::Release] count=", references);
    return references;
}
