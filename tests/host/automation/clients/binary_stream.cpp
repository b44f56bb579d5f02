// A server for the class ADODB.Stream, in the test's own Wine prefix: binary streams with what scripts
// need to read and write files. Windows only: that of Wine 8 has neither LoadFromFile nor SaveToFile,
// and script engines have no other way to the bytes of a file.
#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <new>
#include <string>

namespace {

constexpr HRESULT kNoFile = static_cast<HRESULT>(0x800A0BBA);

enum Member : DISPID { kType = 1, kOpen, kClose, kLoadFromFile, kRead, kWrite, kSaveToFile };
constexpr const wchar_t* kNames[] = {L"Type", L"Open",  L"Close",     L"LoadFromFile",
                                     L"Read", L"Write", L"SaveToFile"};

class Stream : public IDispatch {
public:
    virtual ~Stream() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        *result = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        if (!*result) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        *info = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        for (std::size_t i = 0; i < std::size(kNames); ++i) {
            if (lstrcmpiW(names[0], kNames[i]) == 0) {
                ids[0] = static_cast<DISPID>(i + 1);
                return S_OK;
            }
        }
        ids[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO* info, UINT*) override {
        const HRESULT answer = call(member, *arguments, result);
        if (answer == kNoFile && info) {
            *info = EXCEPINFO();
            info->scode = answer;
            info->bstrDescription = SysAllocString(L"File could not be opened.");
            info->bstrSource = SysAllocString(L"ADODB.Stream");
            return DISP_E_EXCEPTION;
        }
        return answer;
    }

private:
    HRESULT call(DISPID member, const DISPPARAMS& arguments, VARIANT* result) {
        switch (member) {
            case kType:
            case kOpen:
                return S_OK;
            case kClose:
                m_content.clear();
                return S_OK;
            case kLoadFromFile:
                return load(first(arguments));
            case kRead:
                return read(result);
            case kWrite:
                return write(first(arguments));
            case kSaveToFile:
                return save(first(arguments));
            default:
                return DISP_E_MEMBERNOTFOUND;
        }
    }

    /// The first argument, which is the last of the array; without the variables around it.
    static const VARIANT* first(const DISPPARAMS& arguments) {
        if (arguments.cArgs == 0) {
            return nullptr;
        }
        const VARIANT* value = &arguments.rgvarg[arguments.cArgs - 1];
        while (value->vt == (VT_BYREF | VT_VARIANT)) {
            value = value->pvarVal;
        }
        return value;
    }

    /// The name of a file in the code page of the narrow functions.
    static std::string nameOf(const VARIANT* path) {
        if (!path || path->vt != VT_BSTR) {
            return {};
        }
        char name[MAX_PATH] = "";
        WideCharToMultiByte(CP_ACP, 0, path->bstrVal, -1, name, MAX_PATH, nullptr, nullptr);
        return name;
    }

    HRESULT load(const VARIANT* path) {
        std::ifstream file(nameOf(path), std::ios::binary);
        if (!file) {
            return kNoFile;
        }
        m_content.assign(std::istreambuf_iterator<char>(file), {});
        return S_OK;
    }

    HRESULT read(VARIANT* result) {
        if (!result) {
            return S_OK;
        }
        if (m_content.empty()) {
            result->vt = VT_NULL;  // as the class of Windows does
            return S_OK;
        }
        SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(m_content.size()));
        if (!array) {
            return E_OUTOFMEMORY;
        }
        std::copy(m_content.begin(), m_content.end(), static_cast<char*>(array->pvData));
        result->vt = VT_ARRAY | VT_UI1;
        result->parray = array;
        return S_OK;
    }

    /// Takes an array of bytes alone, as the class of Windows does.
    HRESULT write(const VARIANT* bytes) {
        if (!bytes || (bytes->vt & ~VT_BYREF) != (VT_ARRAY | VT_UI1)) {
            return DISP_E_TYPEMISMATCH;
        }
        const SAFEARRAY* array = bytes->vt & VT_BYREF ? *bytes->pparray : bytes->parray;
        m_content.append(static_cast<const char*>(array->pvData), array->rgsabound[0].cElements);
        return S_OK;
    }

    HRESULT save(const VARIANT* path) {
        std::ofstream file(nameOf(path), std::ios::binary);
        file << m_content;
        return file.flush() ? S_OK : kNoFile;
    }

    std::atomic<ULONG> m_references = 1;
    std::string m_content;
};

class Factory : public IClassFactory {
public:
    virtual ~Factory() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        *result = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
        return *result ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** result) override {
        auto* stream = new (std::nothrow) Stream;
        if (!stream) {
            return E_OUTOFMEMORY;
        }
        const HRESULT answer = stream->QueryInterface(iid, result);
        stream->Release();
        return answer;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID, REFIID iid, void** result) {
    static Factory factory;
    return factory.QueryInterface(iid, result);
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}
