// KeyCertificate: the certificate of a container; the backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "runtime/component.h"

class KeyContainer;

class KeyCertificate : public ZComponent<IKeyCertificate> {
public:
    /// @param container  the parent; gains a reference for the object's life. May be null.
    explicit KeyCertificate(KeyContainer* container);
    ~KeyCertificate() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE GetCertData(VARIANT* data) override;
    HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) override;

    DispatchInfo* GetSelfDispatchInfo() override;
    int GetSelfGetDispatchInfoCount() override;

    static DispatchInfo* GetDispatchInfo(ZComponentImpl* obj, const char* name);
    static DispatchInfo* GetDispatchInfoById(ZComponentImpl* obj, LONG id);

    KeyContainer* GetParent() const { return m_pKeyContainer; }

    HRESULT _GetCertID(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetCertData(DISPPARAMS* params, VARIANT* result);

private:
    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    KeyContainer* m_pKeyContainer;
};
