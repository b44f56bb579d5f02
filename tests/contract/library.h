// What every black-box test begins with: a factory and a provider from the library's one export.
#pragma once

#include <gtest/gtest.h>
#include <zrkey/zrkey.h>

#include <string>
#include <vector>

namespace zr::test {

/// A factory with one reference.
inline IClassFactory* getFactory() {
    IClassFactory* factory = nullptr;
    EXPECT_EQ(S_OK, ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory,
                                      reinterpret_cast<void**>(&factory)));
    return factory;
}

/// A provider with one reference.
inline ITokenProvider* makeProvider() {
    IClassFactory* factory = getFactory();
    ITokenProvider* provider = nullptr;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_ITokenProvider,
                                            reinterpret_cast<void**>(&provider)));
    EXPECT_EQ(0u, factory->Release());
    return provider;
}

/// A string for one call.
class Text {
public:
    explicit Text(const OLECHAR* text) : m_text(SysAllocString(text)) {}
    explicit Text(const std::string& ascii) {
        const std::basic_string<OLECHAR> wide(ascii.begin(), ascii.end());
        m_text = SysAllocString(wide.c_str());
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { SysFreeString(m_text); }
    operator BSTR() const { return m_text; }

private:
    BSTR m_text;
};

inline VARIANT number(double value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_R8;
    variant.dblVal = value;
    return variant;
}

/// Borrows the string.
inline VARIANT string(BSTR text) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = text;
    return variant;
}

/// The id of a member; 0 when the object does not know it.
inline DISPID idOf(IDispatch* object, const std::string& name) {
    std::basic_string<OLECHAR> wide(name.begin(), name.end());
    LPOLESTR names = wide.data();
    DISPID id = 0;
    return SUCCEEDED(object->GetIDsOfNames(IID_NULL, &names, 1, 0, &id)) ? id : 0;
}

/// Calls a member with its arguments in natural order.
inline HRESULT invoke(IDispatch* object, DISPID id, std::vector<VARIANT> arguments,
                      VARIANT* result) {
    DISPPARAMS params = {};
    params.rgvarg = arguments.data();
    params.cArgs = static_cast<UINT>(arguments.size());
    return object->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, result, nullptr, nullptr);
}

/// A result variant that shows whether it was touched.
inline VARIANT poisoned() {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_UI1;
    variant.ullVal = 0x5A5A5A5A5A5A5A5A;
    return variant;
}

}  // namespace zr::test
