// TokenProvider: what a script can ask of a provider; the backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "model/zr_log.h"
#include "runtime/component.h"

class TokenProvider : public ZComponent<ITokenProvider> {
public:
    TokenProvider();
    ~TokenProvider() override;

    /// Also stores the provider for its own identifier, but without a reference and still answering
    /// E_NOTIMPL; hosts take the pointer and know.
    HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // E_NOTIMPL until the backend overrides them.
    HRESULT STDMETHODCALLTYPE Load(BSTR path) override;
    HRESULT STDMETHODCALLTYPE Unload() override;
    HRESULT STDMETHODCALLTYPE OpenKey(LONG index, void** key) override;
    HRESULT STDMETHODCALLTYPE GetName(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE GetKeyCount(INT* count) override;
    HRESULT STDMETHODCALLTYPE GetKeySN(LONG index, BSTR* serial) override;
    HRESULT STDMETHODCALLTYPE LoadFinish(INT* done) override;

    /// Unloads the module through the virtual Unload.
    void FinalRelease() override;
    DispatchInfo* GetSelfDispatchInfo() override;
    int GetSelfGetDispatchInfoCount() override;

    static DispatchInfo* GetDispatchInfo(ZComponentImpl* obj, const char* name);
    static DispatchInfo* GetDispatchInfoById(ZComponentImpl* obj, LONG id);

    /// Attaches the logger to its file when the environment names a log home.
    /// @return 1 when logging was turned on, else 0.
    int EnableLog();

    /// The logger of the provider and of every object below it; null when there is none.
    const ZRLog* GetLog() const { return m_pLog; }

    HRESULT _Load(DISPPARAMS* params, VARIANT* result);
    HRESULT _Unload(DISPPARAMS* params, VARIANT* result);
    HRESULT _OpenKey(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetKeyCount(DISPPARAMS* params, VARIANT* result);

private:
    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    ZRLog* m_pLog;
};
