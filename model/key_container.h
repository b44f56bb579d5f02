// KeyContainer: a key container of a token; the backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "runtime/component.h"

class KeyObject;

class KeyContainer : public ZComponent<IKeyContainer> {
public:
    /// @param token  the parent; gains a reference for the object's life. May be null.
    explicit KeyContainer(KeyObject* token);
    ~KeyContainer() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE GetType(BSTR* type) override;
    HRESULT STDMETHODCALLTYPE ImportCertificate(bool signing, VARIANT certificate) override;
    HRESULT STDMETHODCALLTYPE ExportCertificate(bool signing, VARIANT* certificate) override;
    HRESULT STDMETHODCALLTYPE GenKeyPair(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetKeyCert(bool signing, void** certificate) override;

    KeyObject* GetParent() const { return m_pKeyObject; }

private:
    KeyObject* m_pKeyObject;
};
