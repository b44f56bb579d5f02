// Handing text out as a string of the caller's.
#pragma once

#include <zrkey/automation.h>

#include "runtime/zcom_bstr.h"

namespace zr {

/// @param text  UTF-8.
/// @param out   receives a string that the caller owns; untouched on failure.
/// @retval E_OUTOFMEMORY  the string cannot be made.
inline HRESULT handOutText(const char* text, BSTR* out) {
    const BSTR copy = zrapi::ZComBSTR(text).Copy();
    if (!copy) {
        return E_OUTOFMEMORY;
    }
    *out = copy;
    return S_OK;
}

}  // namespace zr
