// The two templates that combine an interface with ZComponentImpl.
//
//     class Thing : public ZComponent<IThing> { ... };  // defines the operations of IThing
//
// A class with members for scripts also has a method table: see runtime/dispatch_table.h.
#pragma once

#include "runtime/component_impl.h"

/// Placeholders for the operations of IUnknown and IDispatch. T derives from IDispatch, or from
/// IUnknown only, such as IClassFactory; the slots of IDispatch then follow those of T.
template <class T>
class IDispatchImpl : public T {
public:
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(const GUID&, void**) { return E_NOTIMPL; }
    virtual ULONG STDMETHODCALLTYPE AddRef() { return static_cast<ULONG>(E_NOTIMPL); }
    virtual ULONG STDMETHODCALLTYPE Release() { return static_cast<ULONG>(E_NOTIMPL); }
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) { return E_NOTIMPL; }
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(const GUID&, LPOLESTR*, UINT, LCID, DISPID*) {
        return E_NOTIMPL;
    }
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID, const GUID&, LCID, WORD, DISPPARAMS*, VARIANT*,
                                             EXCEPINFO*, UINT*) {
        return E_NOTIMPL;
    }
};

/// A scriptable object with the interface T: forwards the operations of IUnknown, IDispatch and
/// ISupportErrorInfo to ZComponentImpl. The order of the declarations is the order of the slots:
/// the destructors, then InterfaceSupportsErrorInfo.
template <class T>
class ZComponent : public IDispatchImpl<T>, public ZComponentImpl, public ISupportErrorInfo {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(const GUID& riid, void** ppv) override {
        return ZComponentImpl::QueryInterface(riid, ppv);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ZComponentImpl::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return ZComponentImpl::Release(); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        return ZComponentImpl::GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override {
        return ZComponentImpl::GetTypeInfo(index, lcid, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(const GUID& riid, LPOLESTR* names, UINT count,
                                            LCID lcid, DISPID* ids) override {
        return ZComponentImpl::GetIDsOfNames(riid, names, count, lcid, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const GUID& riid, LCID lcid, WORD flags,
                                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                     UINT* argErr) override {
        return ZComponentImpl::Invoke(id, riid, lcid, flags, params, result, excep, argErr);
    }
    ~ZComponent() override {}
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(const GUID& riid) override {
        return ZComponentImpl::InterfaceSupportsErrorInfo(riid);
    }
};
