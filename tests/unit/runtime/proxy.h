// A proxy for tests.
#pragma once

#include <zrkey/automation.h>

#include <functional>
#include <limits>
#include <string>

namespace zr::test {

/// Knows one name and returns the id and the results that a test sets. Records its calls.
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

    /// The arguments of the last look-up.
    struct LookUp {
        IID riid;
        LPOLESTR* names;
        UINT count;
        LCID lcid;
        DISPID firstId;  ///< its value before the look-up
    };
    /// The arguments of the last call, except the id.
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
    UINT mostIds = std::numeric_limits<UINT>::max();  ///< how many ids it writes at most
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

/// An object whose value is the number 42.
class ValueObject : public Proxy {
public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const IID& riid, LCID lcid, WORD flags,
                                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                     UINT* argErr) override {
        Proxy::Invoke(id, riid, lcid, flags, params, result, excep, argErr);
        result->vt = VT_I4;
        result->lVal = 42;
        return S_OK;
    }
};

}  // namespace zr::test
