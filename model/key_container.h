// KeyContainer: a key container of a token. The backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "runtime/component.h"

class KeyObject;

class KeyContainer : public ZComponent<IKeyContainer> {
public:
    /// @param token  the parent; the object holds a reference to it. May be null.
    explicit KeyContainer(KeyObject* token);
    ~KeyContainer() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE Close() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetType(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ImportCertificate(bool, VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ExportCertificate(bool, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GenKeyPair(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetKeyCert(bool, void**) override { return E_NOTIMPL; }

    KeyObject* GetParent() const { return m_pKeyObject; }

private:
    KeyObject* m_pKeyObject;
};
