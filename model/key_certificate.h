// KeyCertificate: the certificate of a container. The backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "runtime/component.h"
#include "runtime/dispatch_table.h"

class KeyContainer;

class KeyCertificate : public zr::WithMethodTable<KeyCertificate, ZComponent<IKeyCertificate>> {
public:
    /// @param container  the parent; the object holds a reference to it. May be null.
    explicit KeyCertificate(KeyContainer* container);
    ~KeyCertificate() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE GetCertData(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCertID(BSTR*) override { return E_NOTIMPL; }

    KeyContainer* GetParent() const { return m_pKeyContainer; }

    HRESULT _GetCertID(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetCertData(DISPPARAMS* params, VARIANT* result);

private:
    friend class zr::WithMethodTable<KeyCertificate, ZComponent<IKeyCertificate>>;

    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    KeyContainer* m_pKeyContainer;
};
