// What adapters write into the result of a call.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// Sets a result to the zero of a type. What it held before is overwritten, not cleared.
/// @param result  null is ignored.
inline void presetResult(VARIANT* result, VARTYPE type) {
    if (result) {
        *result = VARIANT();
        result->vt = type;
    }
}

/// Turns the success of an operation into VARIANT_TRUE; after a failure the preset result stays.
/// @param result  preset to VT_BOOL; null is ignored.
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
