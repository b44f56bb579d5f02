// VariantChangeType: the conversions between variant types.
#include <cmath>
#include <limits>

#include "variant.h"

namespace {

__extension__ using Wide = __int128;

bool isInteger(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_I2:
        case VT_I4:
        case VT_I8:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_UI8:
        case VT_INT:
        case VT_UINT:
            return true;
        default:
            return false;
    }
}

Wide integerValue(const VARIANT& variant) {
    switch (variant.vt) {
        case VT_I1:
            return static_cast<signed char>(variant.cVal);
        case VT_I2:
            return variant.iVal;
        case VT_BOOL:
            return variant.boolVal;
        case VT_I4:
        case VT_INT:
            return variant.lVal;
        case VT_I8:
            return variant.llVal;
        case VT_UI1:
            return variant.bVal;
        case VT_UI2:
            return variant.uiVal;
        case VT_UI4:
        case VT_UINT:
            return variant.ulVal;
        case VT_UI8:
            return static_cast<Wide>(variant.ullVal);
        default:
            return 0;
    }
}

template <typename Value>
bool store(Wide value, Value* target) {
    if (value < std::numeric_limits<Value>::min() || value > std::numeric_limits<Value>::max()) {
        return false;
    }
    *target = static_cast<Value>(value);
    return true;
}

bool storeInteger(Wide value, VARTYPE type, VARIANT* target) {
    target->vt = type;
    switch (type) {
        case VT_I1: {
            signed char narrow = 0;
            const bool fits = store(value, &narrow);
            target->cVal = static_cast<CHAR>(narrow);
            return fits;
        }
        case VT_I2:
            return store(value, &target->iVal);
        case VT_I4:
        case VT_INT:
            return store(value, &target->lVal);
        case VT_I8:
            return store(value, &target->llVal);
        case VT_UI1:
            return store(value, &target->bVal);
        case VT_UI2:
            return store(value, &target->uiVal);
        case VT_UI4:
        case VT_UINT:
            return store(value, &target->ulVal);
        default:
            return store(value, &target->ullVal);
    }
}

HRESULT convert(const VARIANT& source, VARTYPE type, VARIANT* target) {
    if (!isInteger(type) && type != VT_BOOL && type != VT_R8) {
        return DISP_E_TYPEMISMATCH;
    }
    double real = 0;
    if (source.vt == VT_R8 || source.vt == VT_R4) {
        real = source.vt == VT_R8 ? source.dblVal : source.fltVal;
    } else if (isInteger(source.vt) || source.vt == VT_BOOL || source.vt == VT_EMPTY) {
        real = static_cast<double>(integerValue(source));
    } else {
        return DISP_E_TYPEMISMATCH;
    }
    if (type == VT_R8) {
        target->vt = VT_R8;
        target->dblVal = real;
        return S_OK;
    }
    if (type == VT_BOOL) {
        target->vt = VT_BOOL;
        target->boolVal = real != 0 ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    if (source.vt != VT_R8 && source.vt != VT_R4) {
        return storeInteger(integerValue(source), type, target) ? S_OK : DISP_E_OVERFLOW;
    }
    if (!(std::fabs(real) < 1e30)) {
        return DISP_E_OVERFLOW;
    }
    return storeInteger(static_cast<Wide>(std::nearbyint(real)), type, target)
               ? S_OK
               : DISP_E_OVERFLOW;
}

}  // namespace

extern "C" HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT, VARTYPE type) {
    HRESULT hr = zr::validateType(source->vt);
    if (FAILED(hr)) {
        return hr;
    }
    hr = zr::validateType(type);
    if (FAILED(hr)) {
        return hr;
    }
    if (source->vt == type) {
        return VariantCopy(target, source);
    }
    VARIANT result;
    VariantInit(&result);
    hr = convert(*source, type, &result);
    if (FAILED(hr)) {
        return hr;
    }
    hr = VariantClear(target);
    if (SUCCEEDED(hr)) {
        *target = result;
    }
    return hr;
}
