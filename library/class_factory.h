// ClassFactory: creates providers. ZCLGetClassObject returns it.
#pragma once

#include <zrkey/zrkey.h>

#include "runtime/component.h"

class ClassFactory : public ZComponent<IClassFactory> {
public:
    /// @param outer  ignored.
    /// @param riid   IID_ITokenProvider or IID_IClassFactory.
    /// @param ppv    receives a new provider with one reference, or the factory itself without a
    ///               new reference: the caller holds one already. Untouched on failure.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   ppv is null.
    /// @retval E_OUTOFMEMORY  out of memory.
    /// @retval E_NOINTERFACE  riid is any other identifier.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, const GUID& riid,
                                             void** ppv) override;
    /// Does nothing.
    /// @retval S_OK  always.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;
};
