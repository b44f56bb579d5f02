// KeyFile: a data file on a token; the backend overrides the operations. It has no members for
// scripts.
#pragma once

#include <zrkey/zrkey.h>

#include "model/zr_log.h"
#include "runtime/component.h"

class KeyObject;

class KeyFile : public ZComponent<IKeyFile> {
public:
    /// @param token  the parent; gains a reference for the object's life. May be null.
    explicit KeyFile(KeyObject* token);
    ~KeyFile() override;

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE Flush() override;
    HRESULT STDMETHODCALLTYPE Write(VARIANT data) override;
    HRESULT STDMETHODCALLTYPE Read(ULONG length, VARIANT* data) override;
    HRESULT STDMETHODCALLTYPE GetSize(VARIANT* size) override;
    HRESULT STDMETHODCALLTYPE Seek(LONG offset, INT origin) override;

    KeyObject* GetParent() const { return m_pKeyObject; }
    /// The logger of the token's provider; null when there is none.
    const ZRLog* GetLog() const;

private:
    KeyObject* m_pKeyObject;
};
