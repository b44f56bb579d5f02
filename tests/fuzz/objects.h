// Small holders for what a fuzzer passes to the library and gets back.
#pragma once

#include <zrkey/zrkey.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

#include "tests/fuzz/expect.h"

namespace zr::fuzz {

/// One reference.
template <class Interface>
class Ref {
public:
    Ref() = default;
    Ref(const Ref&) = delete;
    Ref& operator=(const Ref&) = delete;
    ~Ref() {
        if (m_object) {
            m_object->Release();
        }
    }
    void** out() { return reinterpret_cast<void**>(&m_object); }
    Interface* get() const { return m_object; }
    Interface* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    Interface* m_object = nullptr;
};

/// A string of arbitrary units, zeros among them.
class String {
public:
    explicit String(const std::string& bytes)
        : m_text(SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size() / 2))) {
        bytes.copy(reinterpret_cast<char*>(m_text), bytes.size() / 2 * 2);
    }
    /// The letters of an ASCII text.
    static String ascii(const std::string& text) {
        std::string wide;
        for (const char letter : text) {
            wide += {letter, '\0'};
        }
        return String(wide);
    }
    String(const String&) = delete;
    String& operator=(const String&) = delete;
    ~String() { SysFreeString(m_text); }
    operator BSTR() const { return m_text; }
    /// Gives the string up to the caller.
    BSTR release() { return std::exchange(m_text, nullptr); }

private:
    BSTR m_text;
};

/// A variant that is cleared at the end.
class Variant {
public:
    Variant() { VariantInit(&m_variant); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(&m_variant); }
    VARIANT* get() { return &m_variant; }
    VARIANT* operator->() { return &m_variant; }
    operator const VARIANT&() const { return m_variant; }

    void setBytes(const std::string& bytes) {
        SAFEARRAYBOUND bound = {static_cast<ULONG>(bytes.size()), 0};
        m_variant.vt = VT_ARRAY | VT_UI1;
        m_variant.parray = SafeArrayCreate(VT_UI1, 1, &bound);
        void* data = nullptr;
        SafeArrayAccessData(m_variant.parray, &data);
        bytes.copy(static_cast<char*>(data), bytes.size());
        SafeArrayUnaccessData(m_variant.parray);
    }

private:
    VARIANT m_variant;
};

inline void makeProvider(Ref<ITokenProvider>* provider) {
    Ref<IClassFactory> factory;
    expect(ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, factory.out()) == S_OK);
    expect(factory->CreateInstance(nullptr, IID_ITokenProvider, provider->out()) == S_OK);
}

inline void writeConfig(const std::string& text) {
    // Made anew: a file that is cut first is written to the disk at once when it is closed.
    std::remove("config.xml");
    std::ofstream("config.xml", std::ios::binary) << text;
}

}  // namespace zr::fuzz
