// Objects of the host's own making that the library calls: a proxy and a certificate.
#pragma once

#include <functional>

#include "tests/fuzz/expect.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {

/// A counted object whose calls run a function of the host.
template <class Interface>
class HostObject : public Interface {
public:
    explicit HostObject(std::function<HRESULT()> onCalled) : m_onCalled(std::move(onCalled)) {
        ++s_count;
    }
    HostObject(const HostObject&) = delete;
    HostObject& operator=(const HostObject&) = delete;
    virtual ~HostObject() { --s_count; }

    static int count() { return s_count; }

    HRESULT STDMETHODCALLTYPE QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        expect(m_references > 0, "an object is not released too often");
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(const IID&, LPOLESTR*, UINT, LCID,
                                            DISPID* ids) override {
        const HRESULT hr = m_onCalled();
        if (SUCCEEDED(hr)) {
            ids[0] = 1;
        }
        return hr;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, const IID&, LCID, WORD, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        return m_onCalled();
    }

protected:
    HRESULT callHost() { return m_onCalled(); }

private:
    static inline int s_count = 0;

    std::function<HRESULT()> m_onCalled;
    ULONG m_references = 0;
};

using HostProxy = HostObject<IDispatch>;

/// Has the ID of the tokens' key.
class HostCertificate final : public HostObject<IKeyCertificate> {
public:
    using HostObject<IKeyCertificate>::HostObject;
    HRESULT STDMETHODCALLTYPE GetCertData(VARIANT*) override { return callHost(); }
    HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) override {
        const HRESULT hr = callHost();
        if (SUCCEEDED(hr)) {
            *id = Text("id").release();
        }
        return hr;
    }
};

}  // namespace zr::fuzz
