// An Automation client of zrkeycom.dll.
#include "tests/host/automation/automation_client.h"

#include <cstring>
#include <stdexcept>

#include "host/automation/interfaces.h"

namespace zr::test {
namespace {

HMODULE server() {
    static const HMODULE module = LoadLibraryA(ZRKEY_AUTOMATION_SERVER);
    if (!module) {
        throw std::runtime_error("cannot load " ZRKEY_AUTOMATION_SERVER);
    }
    return module;
}

template <class Function>
Function exportOf(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(server(), name)));
}

std::string takeText(BSTR& text) {
    Text owner;
    owner.reset(text);
    text = nullptr;
    return owner.utf8();
}

std::string hexOf(const std::string& bytes) {
    std::string hex;
    for (const unsigned char byte : bytes) {
        hex.append(1, "0123456789abcdef"[byte >> 4]).append(1, "0123456789abcdef"[byte & 15]);
    }
    return hex;
}

std::string shownTexts(SAFEARRAY* array) {
    const zrkey::ArrayLock lock(array);
    std::string text = "L:";
    for (std::size_t i = 0; i < lock.size(); ++i) {
        text.append(shown(static_cast<const VARIANT*>(lock.data())[i])).append(" ");
    }
    return text;
}

std::string shownNumber(double number) {
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    return "N:" + (text.ends_with('.') ? text.substr(0, text.size() - 1) : text);
}

}  // namespace

HRESULT getClassObject(REFCLSID id, REFIID iid, void** result) {
    return exportOf<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(
        id, iid, result);
}

HRESULT canUnloadNow() {
    return exportOf<HRESULT(STDAPICALLTYPE*)()>("DllCanUnloadNow")();
}

ComRef<IDispatch> makeAutomationProvider() {
    ComRef<IClassFactory> factory;
    ComRef<IDispatch> provider;
    EXPECT_HR(S_OK, getClassObject(CLSID_TokenProvider, IID_IClassFactory, factory.receive()));
    if (factory) {
        EXPECT_HR(S_OK, factory->CreateInstance(nullptr, IID_IDispatch, provider.receive()));
    }
    return provider;
}

DISPID findId(IDispatch* object, const std::string& name) {
    std::wstring wide(name.begin(), name.end());
    LPOLESTR names = wide.data();
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

Answer invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS params) {
    Answer answer;
    EXCEPINFO info = {};
    answer.result = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                   answer.value.receive(), &info, &answer.position);
    answer.code = info.scode;
    answer.source = takeText(info.bstrSource);
    answer.description = takeText(info.bstrDescription);
    return answer;
}

Answer invokeNamed(IDispatch* object, const std::string& member, std::vector<VARIANT> reversed,
                   std::vector<std::string> names) {
    names.insert(names.begin(), member);
    std::vector<std::wstring> wide;
    std::vector<LPOLESTR> pointers;
    for (const std::string& name : names) {
        wide.emplace_back(name.begin(), name.end());
    }
    for (std::wstring& name : wide) {
        pointers.push_back(name.data());
    }
    std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
    const UINT count = static_cast<UINT>(names.size());
    Answer answer;
    answer.result =
        object->GetIDsOfNames(IID_NULL, pointers.data(), count, LOCALE_USER_DEFAULT, ids.data());
    if (FAILED(answer.result)) {
        return answer;
    }
    DISPPARAMS params = {};
    params.rgvarg = reversed.data();
    params.cArgs = static_cast<UINT>(reversed.size());
    params.rgdispidNamedArgs = ids.data() + 1;
    params.cNamedArgs = count - 1;
    return invoke(object, ids[0], DISPATCH_METHOD, params);
}

Answer read(const ComRef<IDispatch>& object, const std::string& property) {
    return invoke(object.get(), findId(object.get(), property), DISPATCH_PROPERTYGET, {});
}

Variant text(const std::string& text) {
    return Variant::fromText(zrkey::Text(std::string_view(text)));
}

Variant bytes(const std::string& bytes) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    std::memcpy(array->pvData, bytes.data(), bytes.size());
    return Variant::fromArray(VT_UI1, array);
}

Variant object(const ComRef<IDispatch>& object) {
    return Variant::fromObject(object);
}

VARIANT missing() {
    VARIANT variant = {};
    variant.vt = VT_ERROR;
    variant.scode = DISP_E_PARAMNOTFOUND;
    return variant;
}

VARIANT referenceTo(VARIANT& variant) {
    return referenceTo(VT_VARIANT, &variant);
}

VARIANT referenceTo(VARTYPE type, void* value) {
    VARIANT variant = {};
    variant.vt = static_cast<VARTYPE>(VT_BYREF | type);
    variant.byref = value;
    return variant;
}

std::string shown(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return "empty";
        case VT_NULL:
            return "null";
        case VT_BOOL:
            return value.boolVal ? "B:true" : "B:false";
        case VT_I4:
            return shownNumber(value.lVal);
        case VT_R8:
            return shownNumber(value.dblVal);
        case VT_BSTR:
            return "S:" + zrkey::detail::toUtf8(value.bstrVal);
        case VT_DISPATCH:
            return value.pdispVal ? "object" : "no object";
        case VT_ARRAY | VT_VARIANT:
            return shownTexts(value.parray);
        case VT_ARRAY | VT_UI1: {
            const zrkey::ArrayLock lock(value.parray);
            return "X:" + hexOf({static_cast<const char*>(lock.data()), lock.size()});
        }
        default:
            return "type " + std::to_string(value.vt);
    }
}

testing::AssertionResult isAnswer(const char*, const char* call, const std::string& expected,
                                  const Answer& answer) {
    const testing::AssertionResult succeeded = isResult("S_OK", call, S_OK, answer.result);
    if (!succeeded) {
        return testing::AssertionFailure() << succeeded.message() << ": " << answer.description;
    }
    if (shown(answer.value) != expected) {
        return testing::AssertionFailure()
               << call << " returned " << shown(answer.value) << ", not " << expected;
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult isRefusal(const char*, const char* call, HRESULT expected,
                                   const Answer& answer) {
    if (answer.code != S_OK || !answer.description.empty() || answer.value.type() != VT_EMPTY) {
        return testing::AssertionFailure() << call << ": " << answer.description;
    }
    return isResult("", call, expected, answer.result);
}

testing::AssertionResult isException(const char*, const char* call, HRESULT expected,
                                     const Answer& answer) {
    if (answer.result != DISP_E_EXCEPTION || answer.value.type() != VT_EMPTY ||
        answer.description.empty()) {
        return testing::AssertionFailure() << call << " has no exception: " << answer.result;
    }
    return isResult("", call, expected, answer.code);
}

}  // namespace zr::test
