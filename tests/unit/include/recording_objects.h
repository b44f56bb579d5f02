// Objects of the public interfaces that note each call, for calls from C.
#ifndef ZR_TESTS_UNIT_INCLUDE_RECORDING_OBJECTS_H
#define ZR_TESTS_UNIT_INCLUDE_RECORDING_OBJECTS_H

#include <zrkey/zrkey.h>

#include <set>
#include <string>

#include "tests/unit/include/c_slots.h"

namespace zr::test {

/// The last call, and the names of all calls.
class CallNotes {
public:
    static CallNotes& instance() {
        static CallNotes s_notes;
        return s_notes;
    }

    /// Begins the calls of another interface.
    void clear() { m_names.clear(); }
    void begin() {
        ++m_number;
        m_last.clear();
    }
    /// Notes a call: its name, and of each argument its position or, if it has another value, "?".
    template <class... Arguments>
    int note(const char* name, Arguments... arguments) {
        m_names.insert(name);
        m_last = std::string(name) + "(";
        int position = 0;
        ((m_last += isArgument(++position, arguments) ? std::to_string(position) : "?"), ...);
        m_last += ")";
        return m_number;
    }
    /// "VerifyPIN(12)": the arguments 1 and 2 arrived as they were passed.
    const std::string& last() const { return m_last; }
    std::size_t differentNames() const { return m_names.size(); }
    int number() const { return m_number; }

private:
    static bool isArgument(int position, const void* value) {
        return value == pointerArgument(position);
    }
    static bool isArgument(int position, bool value) { return value == flagArgument(position); }
    static bool isArgument(int position, const VARIANT& value) {
        return value.vt == VT_I8 && value.llVal == numberArgument(position);
    }
    template <class Number>
    requires std::is_integral_v<Number>
    static bool isArgument(int position, Number value) {
        return value == static_cast<Number>(numberArgument(position));
    }

    int m_number = 0;
    std::string m_last;
    std::set<std::string> m_names;
};

/// An operation that notes its name and arguments.
#define ZR_NOTED(name, parameters, ...)                                      \
    HRESULT STDMETHODCALLTYPE name parameters override {                     \
        return CallNotes::instance().note(#name __VA_OPT__(, ) __VA_ARGS__); \
    }

template <class Interface>
class RecordingUnknown : public Interface {
public:
    ZR_NOTED(QueryInterface, (REFIID a, void** b), &a, b)
    ULONG STDMETHODCALLTYPE AddRef() override {
        return static_cast<ULONG>(CallNotes::instance().note("AddRef"));
    }
    ULONG STDMETHODCALLTYPE Release() override {
        return static_cast<ULONG>(CallNotes::instance().note("Release"));
    }
};

template <class Interface>
class RecordingDispatch : public RecordingUnknown<Interface> {
public:
    ZR_NOTED(GetTypeInfoCount, (UINT * a), a)
    ZR_NOTED(GetTypeInfo, (UINT a, LCID b, ITypeInfo** c), a, b, c)
    ZR_NOTED(GetIDsOfNames, (REFIID a, LPOLESTR* b, UINT c, LCID d, DISPID* e), &a, b, c, d, e)
    ZR_NOTED(Invoke,
             (DISPID a, REFIID b, LCID c, WORD d, DISPPARAMS* e, VARIANT* f, EXCEPINFO* g, UINT* h),
             a, &b, c, d, e, f, g, h)
};

class RecordingClassFactory : public RecordingUnknown<IClassFactory> {
public:
    ZR_NOTED(CreateInstance, (IUnknown * a, REFIID b, void** c), a, &b, c)
    ZR_NOTED(LockServer, (BOOL a), a)
};

class RecordingSupportErrorInfo : public RecordingUnknown<ISupportErrorInfo> {
public:
    ZR_NOTED(InterfaceSupportsErrorInfo, (REFIID a), &a)
};

class RecordingTokenProvider : public RecordingDispatch<ITokenProvider> {
public:
    ZR_NOTED(Load, (BSTR a), a)
    ZR_NOTED(Unload, ())
    ZR_NOTED(OpenKey, (LONG a, void** b), a, b)
    ZR_NOTED(GetName, (BSTR * a), a)
    ZR_NOTED(GetKeyCount, (INT * a), a)
    ZR_NOTED(GetKeySN, (LONG a, BSTR* b), a, b)
    ZR_NOTED(LoadFinish, (INT * a), a)
};

class RecordingKeyObject : public RecordingDispatch<IKeyObject> {
public:
    ZR_NOTED(GetSerialNumber, (BSTR * a), a)
    ZR_NOTED(SetLabel, (BSTR * a, VARIANT* b), a, b)
    ZR_NOTED(GetLabel, (BSTR * a), a)
    ZR_NOTED(GetManufacturerID, (BSTR * a), a)
    ZR_NOTED(GetModelID, (BSTR * a), a)
    ZR_NOTED(GetTotalSize, (VARIANT * a), a)
    ZR_NOTED(GetFreeSize, (VARIANT * a), a)
    ZR_NOTED(ModifyPIN, (BSTR a, BSTR b, INT c), a, b, c)
    ZR_NOTED(GetMaxRetryCount, (INT a, VARIANT* b), a, b)
    ZR_NOTED(GetRemainRetryCount, (INT a, VARIANT* b), a, b)
    ZR_NOTED(IsDefaultPIN, (INT a, VARIANT* b), a, b)
    ZR_NOTED(VerifyPIN, (BSTR a, INT b), a, b)
    ZR_NOTED(UnlockPIN, (BSTR a, BSTR b), a, b)
    ZR_NOTED(Lock, (VARIANT * a), a)
    ZR_NOTED(Unlock, (VARIANT * a), a)
    ZR_NOTED(CreateFile, (BSTR a, INT b, INT c, INT d, ULONG e, void** f), a, b, c, d, e, f)
    ZR_NOTED(FileExists, (BSTR a, VARIANT* b), a, b)
    ZR_NOTED(OpenFile, (BSTR a, void** b), a, b)
    ZR_NOTED(EnumFiles, (VARIANT * a), a)
    ZR_NOTED(DeleteFile, (BSTR a), a)
    ZR_NOTED(GetDigestMethod, (BSTR * a), a)
    ZR_NOTED(DigestData, (BSTR a, VARIANT b, VARIANT* c), a, b, c)
    ZR_NOTED(CreateContainer, (BSTR a, void** b), a, b)
    ZR_NOTED(GetContainerCount, (VARIANT * a), a)
    ZR_NOTED(OpenContainer, (VARIANT a, void** b), a, b)
    ZR_NOTED(DeleteContainer, (VARIANT a), a)
    ZR_NOTED(EnumContainer, (INT a, VARIANT* b), a, b)
    ZR_NOTED(GetCertData, (IKeyCertificate * a, VARIANT* b), a, b)
    ZR_NOTED(GetPubKeyData, (IKeyCertificate * a, VARIANT* b), a, b)
    ZR_NOTED(SignData, (BSTR a, VARIANT b, IKeyCertificate* c, VARIANT* d), a, b, c, d)
    ZR_NOTED(VerifyData, (VARIANT a, IKeyCertificate* b, BSTR c, VARIANT d), a, b, c, d)
    ZR_NOTED(VerifyDataByCert, (VARIANT a, IKeyCertificate* b, VARIANT c, BSTR d, VARIANT e), a, b,
             c, d, e)
    ZR_NOTED(VerifyDataByPubKey, (VARIANT a, IKeyCertificate* b, VARIANT c, BSTR d, VARIANT e), a,
             b, c, d, e)
    ZR_NOTED(GetSignAlgo, (BSTR * a), a)
    ZR_NOTED(GetKeyObjectClassName, (BSTR * a), a)
    ZR_NOTED(GetCaLibPath, (BSTR * a), a)
    ZR_NOTED(GetCSPName, (BSTR * a), a)
    ZR_NOTED(GetAlgoList, (BSTR * a), a)
    ZR_NOTED(GetZRHardApiInfo, (void** a, BSTR* b), a, b)
};

class RecordingKeyFile : public RecordingDispatch<IKeyFile> {
public:
    ZR_NOTED(Close, ())
    ZR_NOTED(Flush, ())
    ZR_NOTED(Write, (VARIANT a), a)
    ZR_NOTED(Read, (ULONG a, VARIANT* b), a, b)
    ZR_NOTED(GetSize, (VARIANT * a), a)
    ZR_NOTED(Seek, (LONG a, INT b), a, b)
};

class RecordingKeyContainer : public RecordingDispatch<IKeyContainer> {
public:
    ZR_NOTED(Close, ())
    ZR_NOTED(GetType, (BSTR * a), a)
    ZR_NOTED(ImportCertificate, (bool a, VARIANT b), a, b)
    ZR_NOTED(ExportCertificate, (bool a, VARIANT* b), a, b)
    ZR_NOTED(GenKeyPair, (VARIANT * a), a)
    ZR_NOTED(GetKeyCert, (bool a, void** b), a, b)
};

class RecordingKeyCertificate : public RecordingDispatch<IKeyCertificate> {
public:
    ZR_NOTED(GetCertData, (VARIANT * a), a)
    ZR_NOTED(GetCertID, (BSTR * a), a)
};

}  // namespace zr::test

#endif
