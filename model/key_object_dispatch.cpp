// KeyObject: method table and adapters.
//
// The number of arguments is not checked. Additional arguments are ignored. A missing last argument
// reads as a zeroed variant: Invoke copies the arguments into an array with one such variant at its
// end. So a missing PIN type is 0, the user, and a missing second PIN is null. A missing first text
// is refused.
#include <iterator>
#include <optional>

#include "model/adapter_result.h"
#include "model/key_object.h"

namespace {

constexpr VARIANT kMissing = {};

/// An argument, or the zeroed variant after the last one; null for any other index.
const VARIANT* argument(const DISPPARAMS* params, UINT index) {
    if (!params || index > params->cArgs) {
        return nullptr;
    }
    if (index == params->cArgs) {
        // Not read from the array: a direct caller has no additional variant in it.
        return &kMissing;
    }
    return params->rgvarg ? &params->rgvarg[index] : nullptr;
}

/// A text argument; nothing when it is of another type or is the first and missing.
std::optional<BSTR> textArgument(const DISPPARAMS* params, UINT index) {
    const VARIANT* found = argument(params, index);
    if (found && (found->vt == VT_BSTR || (found == &kMissing && index > 0))) {
        return found->bstrVal;
    }
    return std::nullopt;
}

}  // namespace

DispatchInfo KeyObject::s_listDispatchInfo[] = {
    {1, "GetSerialNumber", enDispatchMethod, nullptr, VT_BSTR, {}},
    {2, "SetLabel", enDispatchMethod, nullptr, VT_BOOL, {14}},
    {3, "GetLabel", enDispatchMethod, nullptr, VT_BSTR, {}},
    {4, "GetManufacturerID", enDispatchMethod, nullptr, VT_BSTR, {}},
    {5, "GetModelID", enDispatchMethod, nullptr, VT_BSTR, {}},
    {6, "GetTotalSize", enDispatchMethod, nullptr, VT_I4, {}},
    {7, "GetFreeSize", enDispatchMethod, nullptr, VT_I4, {}},
    {8, "ModifyPIN", enDispatchMethod, nullptr, VT_BOOL, {14, 14, 3}},
    {9, "GetMaxRetryCount", enDispatchMethod, nullptr, VT_I4, {3}},
    {10, "GetRemainRetryCount", enDispatchMethod, nullptr, VT_I4, {3}},
    {11, "IsDefaultPIN", enDispatchMethod, nullptr, VT_BOOL, {3}},
    {12, "VerifyPIN", enDispatchMethod, nullptr, VT_BOOL, {14, 3}},
    {13, "UnlockPIN", enDispatchMethod, nullptr, VT_BOOL, {14, 14}},
    {14, "Lock", enDispatchMethod, nullptr, VT_BOOL, {}},
    {15, "Unlock", enDispatchMethod, nullptr, VT_BOOL, {}},
    {16, "CreateFile", enDispatchMethod, nullptr, VT_VOID, {}},
    {17, "FileExists", enDispatchMethod, nullptr, VT_BOOL, {14}},
    {18, "OpenFile", enDispatchMethod, nullptr, VT_VOID, {}},
    {19, "EnumFiles", enDispatchMethod, nullptr, VT_VOID, {}},
    {20, "DeleteFile", enDispatchMethod, nullptr, VT_VOID, {}},
    {21, "GetDigestMethod", enDispatchMethod, nullptr, VT_BSTR, {}},
    {22, "DigestData", enDispatchMethod, nullptr, VT_VOID, {}},
    {23, "CreateContainer", enDispatchMethod, nullptr, VT_VOID, {}},
    {24, "GetContainerCount", enDispatchMethod, nullptr, VT_VOID, {}},
    {25, "OpenContainer", enDispatchMethod, nullptr, VT_VOID, {}},
    {26, "DeleteContainer", enDispatchMethod, nullptr, VT_VOID, {}},
    {27, "EnumContainer", enDispatchMethod, nullptr, VT_VOID, {}},
    {28, "SignData", enDispatchMethod, nullptr, VT_VOID, {}},
    {29, "VerifyData", enDispatchMethod, nullptr, VT_VOID, {}},
    {30, "GetSignAlgo", enDispatchMethod, nullptr, VT_BSTR, {}},
    {},
};

const int KeyObject::s_nDispatchInfoCount = std::size(s_listDispatchInfo) - 1;

const bool KeyObject::s_bAdaptersStored =
    zr::storeAdapters<KeyObject>(s_listDispatchInfo,
                                 {
                                     &KeyObject::_GetSerialNumber,      // 1
                                     &KeyObject::_NotForScripts,        // 2 SetLabel
                                     &KeyObject::_GetLabel,             // 3
                                     &KeyObject::_GetManufacturerID,    // 4
                                     &KeyObject::_GetModelID,           // 5
                                     &KeyObject::_GetTotalSize,         // 6
                                     &KeyObject::_GetFreeSize,          // 7
                                     &KeyObject::_NotForScripts,        // 8 ModifyPIN
                                     &KeyObject::_GetMaxRetryCount,     // 9
                                     &KeyObject::_GetRemainRetryCount,  // 10
                                     &KeyObject::_IsDefaultPIN,         // 11
                                     &KeyObject::_VerifyPIN,            // 12
                                     &KeyObject::_UnlockPIN,            // 13
                                     &KeyObject::_Lock,                 // 14
                                     &KeyObject::_Unlock,               // 15
                                     &KeyObject::_NotForScripts,        // 16 CreateFile
                                     &KeyObject::_FileExists,           // 17
                                     &KeyObject::_NotForScripts,        // 18 OpenFile
                                     &KeyObject::_NotForScripts,        // 19 EnumFiles
                                     &KeyObject::_NotForScripts,        // 20 DeleteFile
                                     &KeyObject::_GetDigestMethod,      // 21
                                     &KeyObject::_NotForScripts,        // 22 DigestData
                                     &KeyObject::_NotForScripts,        // 23 CreateContainer
                                     &KeyObject::_NotForScripts,        // 24 GetContainerCount
                                     &KeyObject::_NotForScripts,        // 25 OpenContainer
                                     &KeyObject::_NotForScripts,        // 26 DeleteContainer
                                     &KeyObject::_NotForScripts,        // 27 EnumContainer
                                     &KeyObject::_NotForScripts,        // 28 SignData
                                     &KeyObject::_NotForScripts,        // 29 VerifyData
                                     &KeyObject::_GetSignAlgo,          // 30
                                 });

HRESULT KeyObject::CallStringGetter(StringGetter getter, VARIANT* result) {
    BSTR text = nullptr;
    const HRESULT hr = (this->*getter)(&text);
    if (FAILED(hr)) {
        return hr;
    }
    if (result) {
        result->vt = VT_BSTR;
        result->bstrVal = text;
    } else {
        SysFreeString(text);
    }
    return S_OK;
}

HRESULT KeyObject::CallTypedGetter(TypedGetter getter, DISPPARAMS* params, VARIANT* result) {
    // The low 32 bits, whatever the type of the variant.
    const VARIANT* type = argument(params, 0);
    return type ? (this->*getter)(type->lVal, result) : E_INVALIDARG;
}

// String getters.

HRESULT KeyObject::_GetSerialNumber(DISPPARAMS*, VARIANT* result) {
    return CallStringGetter(&KeyObject::GetSerialNumber, result);
}

HRESULT KeyObject::_GetLabel(DISPPARAMS*, VARIANT* result) {
    return CallStringGetter(&KeyObject::GetLabel, result);
}

HRESULT KeyObject::_GetManufacturerID(DISPPARAMS*, VARIANT* result) {
    return CallStringGetter(&KeyObject::GetManufacturerID, result);
}

HRESULT KeyObject::_GetModelID(DISPPARAMS*, VARIANT* result) {
    return CallStringGetter(&KeyObject::GetModelID, result);
}

HRESULT KeyObject::_GetDigestMethod(DISPPARAMS*, VARIANT* result) {
    return CallStringGetter(&KeyObject::GetDigestMethod, result);
}

HRESULT KeyObject::_GetSignAlgo(DISPPARAMS*, VARIANT* result) {
    return CallStringGetter(&KeyObject::GetSignAlgo, result);
}

// The backend fills the result.

HRESULT KeyObject::_GetTotalSize(DISPPARAMS*, VARIANT* result) {
    return GetTotalSize(result);
}

HRESULT KeyObject::_GetFreeSize(DISPPARAMS*, VARIANT* result) {
    return GetFreeSize(result);
}

HRESULT KeyObject::_Lock(DISPPARAMS*, VARIANT* result) {
    return Lock(result);
}

HRESULT KeyObject::_Unlock(DISPPARAMS*, VARIANT* result) {
    return Unlock(result);
}

// One argument and the result.

HRESULT KeyObject::_GetMaxRetryCount(DISPPARAMS* params, VARIANT* result) {
    return CallTypedGetter(&KeyObject::GetMaxRetryCount, params, result);
}

HRESULT KeyObject::_GetRemainRetryCount(DISPPARAMS* params, VARIANT* result) {
    return CallTypedGetter(&KeyObject::GetRemainRetryCount, params, result);
}

HRESULT KeyObject::_IsDefaultPIN(DISPPARAMS* params, VARIANT* result) {
    return CallTypedGetter(&KeyObject::IsDefaultPIN, params, result);
}

HRESULT KeyObject::_FileExists(DISPPARAMS* params, VARIANT* result) {
    const std::optional<BSTR> name = textArgument(params, 0);
    return name ? FileExists(*name, result) : E_INVALIDARG;
}

// The outcome becomes a boolean result.

HRESULT KeyObject::_VerifyPIN(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_BOOL);
    const std::optional<BSTR> pin = textArgument(params, 0);
    const VARIANT* type = argument(params, 1);
    return pin && type ? zr::storeOutcome(VerifyPIN(*pin, type->lVal), result) : E_INVALIDARG;
}

HRESULT KeyObject::_UnlockPIN(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_BOOL);
    const std::optional<BSTR> soPin = textArgument(params, 0);
    const std::optional<BSTR> newPin = textArgument(params, 1);
    return soPin && newPin ? zr::storeOutcome(UnlockPIN(*soPin, *newPin), result) : E_INVALIDARG;
}

// Scripts can find these names; only compiled hosts can call the operations.

HRESULT KeyObject::_NotForScripts(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}
