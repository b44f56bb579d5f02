// TokenProvider: a provider, with its members for scripts. The backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "model/zr_log.h"
#include "runtime/component.h"
#include "runtime/dispatch_table.h"

/// The operations of a provider. They return E_NOTIMPL until the backend overrides them.
class TokenProviderOperations : public ZComponent<ITokenProvider> {
public:
    HRESULT STDMETHODCALLTYPE Load(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unload() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenKey(LONG, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetName(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetKeyCount(INT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetKeySN(LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LoadFinish(INT*) override { return E_NOTIMPL; }

    /// Unloads the module through the virtual Unload.
    void FinalRelease() override { Unload(); }
};

class TokenProvider : public zr::WithMethodTable<TokenProvider, TokenProviderOperations> {
public:
    TokenProvider();
    ~TokenProvider() override;

    /// Does what ZComponentImpl::QueryInterface does. For IID_ITokenProvider it also returns
    /// E_NOTIMPL, but stores the provider in *ppv, without a reference. Hosts depend on it.
    HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    /// Turns logging on when the environment names a log home.
    /// @return 1 when logging was turned on, else 0.
    int EnableLog();

    /// The logger of the provider and all its objects; null when there is none.
    const ZRLog* GetLog() const { return m_pLog; }

    HRESULT _Load(DISPPARAMS* params, VARIANT* result);
    HRESULT _Unload(DISPPARAMS* params, VARIANT* result);
    HRESULT _OpenKey(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetKeyCount(DISPPARAMS* params, VARIANT* result);

private:
    friend class zr::WithMethodTable<TokenProvider, TokenProviderOperations>;

    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    ZRLog* m_pLog;
};
