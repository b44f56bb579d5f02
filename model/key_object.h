// KeyObject: what a script can ask of a token; the backend overrides the operations.
#pragma once

#include <zrkey/zrkey.h>

#include "model/zr_log.h"
#include "runtime/component.h"

class TokenProvider;

class KeyObject : public ZComponent<IKeyObject> {
public:
    /// @param provider  the parent; gains a reference for the object's life. May be null.
    explicit KeyObject(TokenProvider* provider);
    ~KeyObject() override;

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // E_NOTIMPL until the backend overrides them. Operations without a body here stay pure.
    HRESULT STDMETHODCALLTYPE GetSerialNumber(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE SetLabel(BSTR* label, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetManufacturerID(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetModelID(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetTotalSize(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetFreeSize(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE ModifyPIN(BSTR oldPin, BSTR newPin, INT type) override;
    HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) override;
    HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) override;
    HRESULT STDMETHODCALLTYPE Lock(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE Unlock(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE CreateFile(BSTR name, INT reserved1, INT reserved2, INT reserved3,
                                         ULONG reserved4, void** file) override;
    HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) override;
    HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE DeleteFile(BSTR name) override;
    HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE CreateContainer(BSTR name, void** container) override;
    HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT which, void** container) override;
    HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT which) override;
    HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate* certificate, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetPubKeyData(IKeyCertificate* certificate, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE VerifyData(VARIANT data, IKeyCertificate* certificate, BSTR algorithm,
                                         VARIANT signature) override;
    HRESULT STDMETHODCALLTYPE GetSignAlgo(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetZRHardApiInfo(void** api, BSTR* info) override;

    // Slots after those of the interface, in this order.
    virtual HRESULT STDMETHODCALLTYPE CloseKey();
    using IKeyObject::DigestData;
    virtual HRESULT STDMETHODCALLTYPE DigestData(VARIANT data, BSTR method, VARIANT* result);
    using IKeyObject::EnumContainer;
    virtual HRESULT STDMETHODCALLTYPE EnumContainer(VARIANT* result);

    DispatchInfo* GetSelfDispatchInfo() override;
    int GetSelfGetDispatchInfoCount() override;

    static DispatchInfo* GetDispatchInfo(ZComponentImpl* obj, const char* name);
    static DispatchInfo* GetDispatchInfoById(ZComponentImpl* obj, LONG id);

    TokenProvider* GetParent() const { return m_pTokenProvider; }
    /// The parent's logger; null when there is none.
    const ZRLog* GetLog() const;

    // Adapters, in table order.
    HRESULT _GetSerialNumber(DISPPARAMS* params, VARIANT* result);
    HRESULT _SetLabel(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetLabel(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetManufacturerID(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetModelID(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetTotalSize(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetFreeSize(DISPPARAMS* params, VARIANT* result);
    HRESULT _ModifyPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetMaxRetryCount(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetRemainRetryCount(DISPPARAMS* params, VARIANT* result);
    HRESULT _IsDefaultPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _VerifyPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _UnlockPIN(DISPPARAMS* params, VARIANT* result);
    HRESULT _Lock(DISPPARAMS* params, VARIANT* result);
    HRESULT _Unlock(DISPPARAMS* params, VARIANT* result);
    HRESULT _CreateFile(DISPPARAMS* params, VARIANT* result);
    HRESULT _FileExists(DISPPARAMS* params, VARIANT* result);
    HRESULT _OpenFile(DISPPARAMS* params, VARIANT* result);
    HRESULT _EnumFiles(DISPPARAMS* params, VARIANT* result);
    HRESULT _DeleteFile(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetDigestMethod(DISPPARAMS* params, VARIANT* result);
    HRESULT _DigestData(DISPPARAMS* params, VARIANT* result);
    HRESULT _CreateContainer(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetContainerCount(DISPPARAMS* params, VARIANT* result);
    HRESULT _OpenContainer(DISPPARAMS* params, VARIANT* result);
    HRESULT _DeleteContainer(DISPPARAMS* params, VARIANT* result);
    HRESULT _EnumContainer(DISPPARAMS* params, VARIANT* result);
    HRESULT _SignData(DISPPARAMS* params, VARIANT* result);
    HRESULT _VerifyData(DISPPARAMS* params, VARIANT* result);
    HRESULT _GetSignAlgo(DISPPARAMS* params, VARIANT* result);

private:
    using StringGetter = HRESULT (STDMETHODCALLTYPE KeyObject::*)(BSTR* out);
    using TypedGetter = HRESULT (STDMETHODCALLTYPE KeyObject::*)(INT type, VARIANT* result);

    HRESULT CallStringGetter(StringGetter getter, VARIANT* result);
    HRESULT CallTypedGetter(TypedGetter getter, DISPPARAMS* params, VARIANT* result);

    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    TokenProvider* m_pTokenProvider;
};
