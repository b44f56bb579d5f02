// ClassFactory: makes providers.
#include "runtime/class_factory.h"

HRESULT STDMETHODCALLTYPE ClassFactory::CreateInstance(IUnknown*, const GUID& riid, void** ppv) {
    if (riid != IID_IClassFactory && riid != IID_ITokenProvider) {
        return E_NOINTERFACE;
    }
    if (!ppv) {
        return E_INVALIDARG;
    }
    if (riid == IID_IClassFactory) {
        *ppv = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ITokenProvider* provider = zr::makeTokenProvider();
    if (!provider) {
        return E_OUTOFMEMORY;
    }
    provider->AddRef();
    *ppv = provider;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ClassFactory::LockServer(BOOL) {
    return S_OK;
}
