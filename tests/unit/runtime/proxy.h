// A proxy of a test's own.
#pragma once

#include <zrkey/automation.h>

#include <functional>
#include <string>

namespace zr::test {

/// Knows one name as id 1 and answers a call by a result of its own.
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
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(const IID&, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        ++lookUps;
        if (onAsked) {
            onAsked();
        }
        for (UINT i = 0; writesIds && i < count; ++i) {
            ids[i] = 1;
        }
        return name == names[0] ? lookUpResult : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const IID&, LCID, WORD, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        lastId = id;
        if (onAsked) {
            onAsked();
        }
        return callResult;
    }

    std::basic_string<OLECHAR> name = OLESTR("Keep");
    HRESULT lookUpResult = S_OK;
    bool writesIds = true;
    HRESULT callResult = S_FALSE;
    ULONG references = 0;
    int lookUps = 0;
    DISPID lastId = 0;
    std::function<void()> onAsked;
    std::function<void()> onReleased;
};

}  // namespace zr::test
