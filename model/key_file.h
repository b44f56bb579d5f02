// KeyFile: a data file on a token. The backend overrides the operations. Scripts have no access to
// it.
#pragma once

#include <zrkey/zrkey.h>

#include "model/zr_log.h"
#include "runtime/component.h"

class KeyObject;

class KeyFile : public ZComponent<IKeyFile> {
public:
    /// @param token  the parent; the object holds a reference to it. May be null.
    explicit KeyFile(KeyObject* token);
    ~KeyFile() override;

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE Close() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Flush() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Write(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Read(ULONG, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSize(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Seek(LONG, INT) override { return E_NOTIMPL; }

    KeyObject* GetParent() const { return m_pKeyObject; }
    /// The logger of the provider; null when there is none.
    const ZRLog* GetLog() const;

private:
    KeyObject* m_pKeyObject;
};
