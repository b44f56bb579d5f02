// ClassFactory: creates providers.
#include "library/class_factory.h"

#include <new>

#include "pkcs11/provider_pkcs11.h"

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
    ITokenProvider* provider = new (std::nothrow) TokenProvider_pkcs11();
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
