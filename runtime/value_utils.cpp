// Helpers for variant types and numbers.
#include "runtime/value_utils.h"

#include <limits>

HRESULT ZVariantCompare(...) {
    return E_FAIL;
}

HRESULT ZVariantGetTypeSize(VARTYPE vt, ULONG* size) {
    if (!size) {
        return E_INVALIDARG;
    }
    switch (vt) {
        case VT_I1:
        case VT_UI1:
            *size = 1;
            return S_OK;
        case VT_I2:
        case VT_BOOL:
        case VT_UI2:
            *size = 2;
            return S_OK;
        case VT_I4:
        case VT_R4:
        case VT_ERROR:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
            *size = 4;
            return S_OK;
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
        case VT_I8:
        case VT_UI8:
            *size = 8;
            return S_OK;
        default:
            return E_FAIL;
    }
}

namespace zr {

LONG truncateToLong(double value) {
    if (value > -2147483649.0 && value < 2147483648.0) {
        return static_cast<LONG>(value);
    }
    return std::numeric_limits<LONG>::min();
}

std::uint8_t truncateToByte(double value) {
    // The low bits of larger numbers are 0: a double has 53 significant bits.
    const bool hasLowBits = value > -0x1p62 && value < 0x1p62;
    return hasLowBits ? static_cast<std::uint8_t>(static_cast<std::int64_t>(value)) : 0;
}

}  // namespace zr
