// A proxy of a test's own.
#pragma once

#include <zrkey/automation.h>

#include <functional>
#include <limits>
#include <string>

namespace zr::test {

/// Knows one name by an id of its own and answers a call by a result of its own.
class Proxy : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        if (onReleased) {
            onReleased();
        }
        return --references;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(const IID& riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* ids) override {
        ++lookUps;
        lookUp = {riid, names, count, lcid, ids[0]};
        if (onAsked) {
            onAsked();
        }
        for (UINT i = 0; i < mostIds && i < count; ++i) {
            ids[i] = ownId;
        }
        return name == names[0] ? lookUpResult : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const IID& riid, LCID lcid, WORD flags,
                                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                     UINT* argErr) override {
        ++calls;
        lastId = id;
        call = {riid, lcid, flags, params, result, excep, argErr};
        if (onAsked) {
            onAsked();
        }
        return callResult;
    }

    /// What it was handed with the last name.
    struct LookUp {
        IID riid;
        LPOLESTR* names;
        UINT count;
        LCID lcid;
        DISPID firstId;  ///< as it stood before
    };
    /// What it was handed with the last call, besides the id.
    struct Call {
        IID riid;
        LCID lcid;
        WORD flags;
        DISPPARAMS* params;
        VARIANT* result;
        EXCEPINFO* excep;
        UINT* argErr;
    };

    std::basic_string<OLECHAR> name = OLESTR("Keep");
    HRESULT lookUpResult = S_OK;
    UINT mostIds = std::numeric_limits<UINT>::max();  ///< it writes no more, whatever it is asked
    DISPID ownId = 1;
    HRESULT callResult = S_FALSE;
    ULONG references = 0;
    int lookUps = 0;
    LookUp lookUp = {};
    int calls = 0;
    DISPID lastId = 0;
    Call call = {};
    std::function<void()> onAsked;
    std::function<void()> onReleased;
};

}  // namespace zr::test
