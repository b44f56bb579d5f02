// The only export of the library.
#include <new>

#include "library/class_factory.h"
#include "runtime/diagnostics.h"

extern "C" HRESULT STDMETHODCALLTYPE ZCLGetClassObject(const GUID& rclsid, const GUID& riid,
                                                       void** ppv) {
    if (!ppv) {
        zr::consoleError("[ZCLGetClassObject] ppv == NULL\n");
        return E_INVALIDARG;
    }
    if (rclsid != LIBID_ZRKey) {
        // Hosts that try several libraries expect this code, not a class-not-available code.
        return E_NOTIMPL;
    }
    if (riid != IID_IClassFactory) {
        zr::consoleError("[ZCLGetClassObject] no interface\n");
        return E_NOINTERFACE;
    }
    auto* factory = new (std::nothrow) ClassFactory();
    if (!factory) {
        zr::consoleError("[ZCLGetClassObject] out of memory\n");
        return E_OUTOFMEMORY;
    }
    factory->AddRef();
    *ppv = static_cast<IClassFactory*>(factory);
    return S_OK;
}
