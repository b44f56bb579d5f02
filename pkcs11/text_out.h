// Handing out text as a BSTR that the caller owns.
#pragma once

#include <zrkey/automation.h>

#include "runtime/string_convert.h"

namespace zr {

/// @param text  UTF-8.
/// @param out   receives a string that the caller owns; untouched on failure.
/// @retval E_OUTOFMEMORY  out of memory.
inline HRESULT handOutText(const char* text, BSTR* out) {
    const BSTR made = ZSysAllocUTF8String(text);
    if (!made) {
        return E_OUTOFMEMORY;
    }
    *out = made;
    return S_OK;
}

}  // namespace zr
