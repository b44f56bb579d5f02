// Setting the result of a call: helpers of the adapters.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// Sets a result to the zero value of a type. It is overwritten, not cleared.
/// @param result  null is ignored.
inline void presetResult(VARIANT* result, VARTYPE type) {
    if (result) {
        *result = VARIANT();
        result->vt = type;
    }
}

/// Sets the result of a successful operation to VARIANT_TRUE. After a failure it is not changed.
/// @param result  already set to VT_BOOL; null is ignored.
/// @return hr when it is a failure, else S_OK.
inline HRESULT storeOutcome(HRESULT hr, VARIANT* result) {
    if (FAILED(hr)) {
        return hr;
    }
    if (result) {
        result->boolVal = VARIANT_TRUE;
    }
    return S_OK;
}

}  // namespace zr
