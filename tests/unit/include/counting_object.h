// An object for tests of what owns references.
#pragma once

#include <zrkey/automation.h>

namespace zr::test {

/// An object that counts its references and is not freed by the last.
class CountingObject : public IDispatch {
public:
    virtual ~CountingObject() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }

    ULONG references = 1;
};

}  // namespace zr::test
