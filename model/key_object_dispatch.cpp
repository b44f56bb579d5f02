// KeyObject: method table and adapters.
//
// Argument counts are not fixed: what is too much is ignored, and what an adapter reads has to be
// there with its type.
#include "model/adapter_result.h"
#include "model/key_object.h"
#include "runtime/dispatch_table.h"

namespace {

const VARIANT* argument(const DISPPARAMS* params, UINT index) {
    return params && params->rgvarg && index < params->cArgs ? &params->rgvarg[index] : nullptr;
}

const VARIANT* stringArgument(const DISPPARAMS* params, UINT index) {
    const VARIANT* found = argument(params, index);
    return found && found->vt == VT_BSTR ? found : nullptr;
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

const int KeyObject::s_nDispatchInfoCount =
    sizeof s_listDispatchInfo / sizeof s_listDispatchInfo[0] - 1;

const bool KeyObject::s_bAdaptersStored = zr::storeAdapters<KeyObject>(
    s_listDispatchInfo, {
                            &KeyObject::_GetSerialNumber,  &KeyObject::_SetLabel,
                            &KeyObject::_GetLabel,         &KeyObject::_GetManufacturerID,
                            &KeyObject::_GetModelID,       &KeyObject::_GetTotalSize,
                            &KeyObject::_GetFreeSize,      &KeyObject::_ModifyPIN,
                            &KeyObject::_GetMaxRetryCount, &KeyObject::_GetRemainRetryCount,
                            &KeyObject::_IsDefaultPIN,     &KeyObject::_VerifyPIN,
                            &KeyObject::_UnlockPIN,        &KeyObject::_Lock,
                            &KeyObject::_Unlock,           &KeyObject::_CreateFile,
                            &KeyObject::_FileExists,       &KeyObject::_OpenFile,
                            &KeyObject::_EnumFiles,        &KeyObject::_DeleteFile,
                            &KeyObject::_GetDigestMethod,  &KeyObject::_DigestData,
                            &KeyObject::_CreateContainer,  &KeyObject::_GetContainerCount,
                            &KeyObject::_OpenContainer,    &KeyObject::_DeleteContainer,
                            &KeyObject::_EnumContainer,    &KeyObject::_SignData,
                            &KeyObject::_VerifyData,       &KeyObject::_GetSignAlgo,
                        });

DispatchInfo* KeyObject::GetSelfDispatchInfo() {
    return s_listDispatchInfo;
}

int KeyObject::GetSelfGetDispatchInfoCount() {
    return s_nDispatchInfoCount;
}

DispatchInfo* KeyObject::GetDispatchInfo(ZComponentImpl*, const char* name) {
    return zr::findRow(s_listDispatchInfo, s_nDispatchInfoCount, name);
}

DispatchInfo* KeyObject::GetDispatchInfoById(ZComponentImpl*, LONG id) {
    return zr::findRow(s_listDispatchInfo, s_nDispatchInfoCount, id);
}

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
    // Whatever its type, the low 32 bits are the number.
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

// The result is passed through; the backend fills it.

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

// One integer argument and the result.

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
    const VARIANT* name = stringArgument(params, 0);
    return name ? FileExists(name->bstrVal, result) : E_INVALIDARG;
}

// The outcome as a boolean.

HRESULT KeyObject::_VerifyPIN(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_BOOL);
    const VARIANT* pin = stringArgument(params, 0);
    const VARIANT* type = argument(params, 1);
    return pin && type ? zr::storeOutcome(VerifyPIN(pin->bstrVal, type->lVal), result)
                       : E_INVALIDARG;
}

HRESULT KeyObject::_UnlockPIN(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_BOOL);
    const VARIANT* soPin = stringArgument(params, 0);
    const VARIANT* newPin = stringArgument(params, 1);
    return soPin && newPin ? zr::storeOutcome(UnlockPIN(soPin->bstrVal, newPin->bstrVal), result)
                           : E_INVALIDARG;
}

// Listed for scripts to find, but reached by compiled hosts only.

HRESULT KeyObject::_SetLabel(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_ModifyPIN(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_CreateFile(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_OpenFile(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_EnumFiles(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_DeleteFile(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_DigestData(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_CreateContainer(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_GetContainerCount(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_OpenContainer(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_DeleteContainer(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_EnumContainer(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_SignData(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}

HRESULT KeyObject::_VerifyData(DISPPARAMS*, VARIANT*) {
    return E_FAIL;
}
