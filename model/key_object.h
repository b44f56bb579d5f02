// KeyObject: a token, with its members for scripts. The backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "model/zr_log.h"
#include "runtime/component.h"
#include "runtime/dispatch_table.h"

class TokenProvider;

/// The operations of a token. They return E_NOTIMPL until the backend overrides them; those without
/// a body here stay pure.
class KeyObjectOperations : public ZComponent<IKeyObject> {
public:
    HRESULT STDMETHODCALLTYPE GetSerialNumber(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetLabel(BSTR*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetLabel(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetManufacturerID(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetModelID(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTotalSize(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFreeSize(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ModifyPIN(BSTR, BSTR, INT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR, INT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Lock(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unlock(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateFile(BSTR, INT, INT, INT, ULONG, void**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FileExists(BSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenFile(BSTR, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteFile(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateContainer(BSTR, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPubKeyData(IKeyCertificate*, VARIANT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE VerifyData(VARIANT, IKeyCertificate*, BSTR, VARIANT) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetSignAlgo(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetZRHardApiInfo(void**, BSTR*) override { return E_NOTIMPL; }

    // The order of these slots, after those of the interface, is part of the binary contract.
    virtual HRESULT STDMETHODCALLTYPE CloseKey() { return E_NOTIMPL; }
    using IKeyObject::DigestData;
    virtual HRESULT STDMETHODCALLTYPE DigestData(VARIANT, BSTR, VARIANT*) { return E_NOTIMPL; }
    using IKeyObject::EnumContainer;
    virtual HRESULT STDMETHODCALLTYPE EnumContainer(VARIANT*) { return E_NOTIMPL; }
};

class KeyObject : public zr::WithMethodTable<KeyObject, KeyObjectOperations> {
public:
    /// @param provider  the parent; the object holds a reference to it. May be null.
    explicit KeyObject(TokenProvider* provider);
    ~KeyObject() override;

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    TokenProvider* GetParent() const { return m_pTokenProvider; }
    /// The logger of the provider; null when there is none.
    const ZRLog* GetLog() const;

    // Adapters, in table order. Members that scripts cannot call share the last one.
    HRESULT _GetSerialNumber(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetLabel(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetManufacturerID(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetModelID(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetTotalSize(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetFreeSize(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetMaxRetryCount(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetRemainRetryCount(DISPPARAMS* params, VARIANT* result);
    HRESULT _IsDefaultPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _VerifyPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _UnlockPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _Lock(DISPPARAMS* params, VARIANT* result);
    HRESULT _Unlock(DISPPARAMS* params, VARIANT* result);
    HRESULT _FileExists(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetDigestMethod(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetSignAlgo(DISPPARAMS* params, VARIANT* result);
    HRESULT _NotForScripts(DISPPARAMS* params, VARIANT* result);

private:
    friend class zr::WithMethodTable<KeyObject, KeyObjectOperations>;

    using StringGetter = HRESULT (STDMETHODCALLTYPE KeyObject::*)(BSTR* out);
    using TypedGetter = HRESULT (STDMETHODCALLTYPE KeyObject::*)(INT type, VARIANT* result);

    HRESULT CallStringGetter(StringGetter getter, VARIANT* result);
    HRESULT CallTypedGetter(TypedGetter getter, DISPPARAMS* params, VARIANT* result);

    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    TokenProvider* m_pTokenProvider;
};
