// ZErrorInfo: the description of an error.
#include "runtime/error_info.h"

#include <new>

#include "platform/kernel.h"
#include "runtime/diagnostics.h"

namespace {

template <class Value>
HRESULT handOut(Value* out, Value value) {
    if (!out) {
        return E_INVALIDARG;
    }
    *out = value;
    return S_OK;
}

}  // namespace

/// A string of the object. Replaced strings are kept: a host may still hold a pointer from a
/// getter.
struct ZErrorInfo::OwnedString {
    BSTR text;
    OwnedString* next;
};

HRESULT STDMETHODCALLTYPE ZErrorInfo::QueryInterface(const GUID& riid, void** ppv) {
    if (!ppv) {
        return E_INVALIDARG;
    }
    *ppv = nullptr;
    if (riid == IID_IErrorInfo) {
        *ppv = static_cast<IErrorInfo*>(this);
    } else if (riid == IID_ICreateErrorInfo) {
        *ppv = static_cast<ICreateErrorInfo*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE ZErrorInfo::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&m_lRef));
}

ULONG STDMETHODCALLTYPE ZErrorInfo::Release() {
    const LONG count = InterlockedDecrement(&m_lRef);
    if (count == 0) {
        delete this;
        return 0;
    }
    return static_cast<ULONG>(count);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::GetGUID(GUID* guid) {
    return handOut(guid, m_guid);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::GetSource(BSTR* source) {
    return handOut(source, m_bstrSource);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::GetDescription(BSTR* description) {
    zr::consoleOut("[ZErrorInfo::GetDescription] call...\n");
    return handOut(description, m_bstrDescription);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::GetHelpFile(BSTR* helpFile) {
    return handOut(helpFile, m_bstrHelpFile);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::GetHelpContext(DWORD* helpContext) {
    return handOut(helpContext, m_dwHelpContext);
}

ZErrorInfo::~ZErrorInfo() {
    while (OwnedString* owned = m_pStrings) {
        m_pStrings = owned->next;
        SysFreeString(owned->text);
        delete owned;
    }
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::SetGUID(const GUID& guid) {
    m_guid = guid;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::SetSource(LPOLESTR source) {
    return Replace(&m_bstrSource, source);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::SetDescription(LPOLESTR description) {
    return Replace(&m_bstrDescription, description);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::SetHelpFile(LPOLESTR helpFile) {
    return Replace(&m_bstrHelpFile, helpFile);
}

HRESULT STDMETHODCALLTYPE ZErrorInfo::SetHelpContext(DWORD helpContext) {
    m_dwHelpContext = helpContext;
    return S_OK;
}

HRESULT ZErrorInfo::Replace(BSTR* field, LPOLESTR text) {
    *field = SysAllocString(text);
    if (!*field) {
        return E_FAIL;
    }
    auto* owned = new (std::nothrow) OwnedString{*field, m_pStrings};
    if (!owned) {
        SysFreeString(*field);
        *field = nullptr;
        return E_FAIL;
    }
    m_pStrings = owned;
    return S_OK;
}
