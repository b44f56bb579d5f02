// TokenProvider: method table and adapters.
//
// The adapters first set the result to the zero value of its type. They refuse null arguments and a
// wrong number of script arguments. When the operation fails, the result stays zero.
#include <iterator>

#include "model/adapter_result.h"
#include "model/token_provider.h"

namespace {

bool isCallable(const DISPPARAMS* params, const VARIANT* result, UINT count) {
    return params && result && params->cArgs == count && (count == 0 || params->rgvarg);
}

}  // namespace

DispatchInfo TokenProvider::s_listDispatchInfo[] = {
    {1, "Load", enDispatchMethod, nullptr, VT_BOOL, {14}},
    {2, "Unload", enDispatchMethod, nullptr, VT_BOOL, {}},
    {3, "OpenKey", enDispatchMethod, nullptr, VT_DISPATCH, {3}},
    {4, "GetKeyCount", enDispatchMethod, nullptr, VT_I4, {}},
    {},
};

const int TokenProvider::s_nDispatchInfoCount = std::size(s_listDispatchInfo) - 1;

const bool TokenProvider::s_bAdaptersStored =
    zr::storeAdapters<TokenProvider>(s_listDispatchInfo, {
                                                             &TokenProvider::_Load,
                                                             &TokenProvider::_Unload,
                                                             &TokenProvider::_OpenKey,
                                                             &TokenProvider::_GetKeyCount,
                                                         });

HRESULT TokenProvider::_Load(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_BOOL);
    if (!isCallable(params, result, 1) || params->rgvarg[0].vt != VT_BSTR) {
        return E_INVALIDARG;
    }
    return zr::storeOutcome(Load(params->rgvarg[0].bstrVal), result);
}

HRESULT TokenProvider::_Unload(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_BOOL);
    if (!isCallable(params, result, 0)) {
        return E_INVALIDARG;
    }
    return zr::storeOutcome(Unload(), result);
}

HRESULT TokenProvider::_OpenKey(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_DISPATCH);
    if (!isCallable(params, result, 1)) {
        return E_INVALIDARG;
    }
    // Any other type opens the first token.
    const LONG index = params->rgvarg[0].vt == VT_I4 ? params->rgvarg[0].lVal : 0;
    void* key = nullptr;
    const HRESULT hr = OpenKey(index, &key);
    if (FAILED(hr)) {
        return hr;
    }
    result->pdispVal = static_cast<IKeyObject*>(key);
    return S_OK;
}

HRESULT TokenProvider::_GetKeyCount(DISPPARAMS* params, VARIANT* result) {
    zr::presetResult(result, VT_I4);
    if (!isCallable(params, result, 0)) {
        return E_INVALIDARG;
    }
    INT count = 0;
    const HRESULT hr = GetKeyCount(&count);
    if (FAILED(hr)) {
        return hr;
    }
    result->lVal = count;
    return S_OK;
}
