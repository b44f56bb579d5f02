// An automation object for tests of scripts: members that return their arguments and odd results.
#pragma once

#include <zrkey/automation.h>

namespace zr::test {

class ScriptedObject final : public IDispatch {
public:
    ScriptedObject();
    ScriptedObject(const ScriptedObject&) = delete;
    ScriptedObject& operator=(const ScriptedObject&) = delete;

    /// Objects that still have a reference.
    static int living();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags,
                                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                     UINT* argErr) override;

private:
    ~ScriptedObject();

    ULONG m_references = 1;
};

}  // namespace zr::test
