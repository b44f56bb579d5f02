// A certificate as an argument of the library's members: all that they ask of it is its name.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string_view>

namespace zr::host {

/// Made with new; begins with one reference.
class NamedCertificate final : public IKeyCertificate {
public:
    /// @param name  of the container, in UTF-8.
    explicit NamedCertificate(std::string_view name) : m_name(name) {}

    HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) override {
        // Without a name: the empty name would be that of another certificate.
        if (!id || !m_name) {
            return E_INVALIDARG;
        }
        BSTR const copy = SysAllocStringLen(m_name.get(), SysStringLen(m_name.get()));
        if (!copy) {
            return E_OUTOFMEMORY;
        }
        *id = copy;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCertData(VARIANT*) override { return E_NOTIMPL; }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(const IID&, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, const IID&, LCID, WORD, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

private:
    ~NamedCertificate() = default;

    zrkey::Text m_name;
    ULONG m_references = 1;
};

}  // namespace zr::host
