// KeyFile: lifetime, reference counts and the operations without a backend.
#include "model/key_file.h"

#include "model/key_object.h"
#include "model/logged_references.h"

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
    return zr::addRefLogged(*this, GetLog(), "KeyFile", "call...");
}

ULONG STDMETHODCALLTYPE KeyFile::Release() {
    return zr::releaseLogged(*this, GetLog(), "KeyFile");
}

HRESULT STDMETHODCALLTYPE KeyFile::Close() {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyFile::Flush() {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyFile::Write(VARIANT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyFile::Read(ULONG, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyFile::GetSize(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyFile::Seek(LONG, INT) {
    return E_NOTIMPL;
}
