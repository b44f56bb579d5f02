// An object as a script engine passes an array: the properties "length", "0", "1", ...
#pragma once

#include <functional>

#include "tests/host/automation/automation_client.h"

namespace zr::test {

class ScriptArray final : public IDispatch {
public:
    /// Properties that fail, as a script's getter that throws.
    static constexpr VARTYPE kThrows = VT_ILLEGAL;

    void set(const std::wstring& name, Variant value) {
        m_names.push_back(name);
        m_values.push_back(std::move(value));
    }
    /// A property whose getter throws.
    void setThrowing(const std::wstring& name) {
        Variant value;
        value.get().vt = kThrows;
        set(name, std::move(value));
    }
    /// Called within each call of this object.
    void setCallback(std::function<void()> callback) { m_callback = std::move(callback); }
    unsigned int references() const { return m_references; }
    unsigned int invocations() const { return m_invocations; }

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        *result = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        m_references += *result ? 1 : 0;
        return *result ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override { return --m_references; }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const auto found = std::find(m_names.begin(), m_names.end(), std::wstring(names[0]));
        ids[0] = found == m_names.end() ? DISPID_UNKNOWN
                                        : static_cast<DISPID>(found - m_names.begin()) + 1;
        return found == m_names.end() ? DISP_E_UNKNOWNNAME : S_OK;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                        UINT*) override {
        ++m_invocations;
        if (m_callback) {
            m_callback();
        }
        VARIANT& value = m_values.at(static_cast<std::size_t>(id) - 1).get();
        return value.vt == kThrows ? DISP_E_EXCEPTION : VariantCopy(result, &value);
    }

    /// As an argument, borrowed.
    VARIANT argument(VARTYPE type = VT_DISPATCH) {
        VARIANT variant = {};
        variant.vt = type;
        variant.pdispVal = this;
        return variant;
    }

    ~ScriptArray() {
        for (Variant& value : m_values) {
            if (value.type() == kThrows) {
                value.release();
            }
        }
    }

private:
    unsigned int m_references = 1;
    unsigned int m_invocations = 0;
    std::function<void()> m_callback;
    std::vector<std::wstring> m_names;
    std::vector<Variant> m_values;
};

}  // namespace zr::test
