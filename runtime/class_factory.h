// ClassFactory: makes providers; the one object that ZCLGetClassObject hands out.
#pragma once

#include <zrkey/zrkey.h>

#include "runtime/component.h"

namespace zr {

/// A new provider without a reference; defined by the backend that the library is built with.
/// @return null when memory is short.
ITokenProvider* makeTokenProvider();

}  // namespace zr

class ClassFactory : public ZComponent<IClassFactory> {
public:
    /// @param outer  ignored.
    /// @param ppv    receives a new provider with one reference, or the factory itself.
    /// @retval S_OK           done. For IID_IClassFactory no reference is added: the caller holds
    ///                        the factory already.
    /// @retval E_OUTOFMEMORY  memory is short.
    /// @retval E_INVALIDARG   ppv is null.
    /// @retval E_NOINTERFACE  any other identifier.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, const GUID& riid,
                                             void** ppv) override;
    /// Keeps no count. S_OK always.
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;
};
