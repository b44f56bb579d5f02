// VARIANT: initialisation, clearing and deep copies.
#include "platform/linux/automation/variant.h"

namespace zr {

HRESULT validateType(VARTYPE type) {
    constexpr unsigned kModifiers = VT_ARRAY | VT_BYREF;
    if ((type & ~(kModifiers | VT_TYPEMASK)) != 0) {
        return DISP_E_BADVARTYPE;
    }
    const unsigned base = type & VT_TYPEMASK;
    const bool modified = (type & kModifiers) != 0;
    switch (base) {
        case VT_EMPTY:
        case VT_NULL:
            return modified ? DISP_E_BADVARTYPE : S_OK;
        case VT_VARIANT:
        case VT_I2:
        case VT_I4:
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_ERROR:
        case VT_BOOL:
        case VT_UNKNOWN:
        case VT_DECIMAL:
        case VT_I1:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_I8:
        case VT_UI8:
        case VT_INT:
        case VT_UINT:
            return S_OK;
        default:
            return DISP_E_BADVARTYPE;
    }
}

}  // namespace zr

namespace {

bool ownsArray(const VARIANT* variant) {
    return (variant->vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY;
}

}  // namespace

extern "C" {

void VariantInit(VARIANT* variant) {
    std::memset(variant, 0, sizeof *variant);
}

HRESULT VariantClear(VARIANT* variant) {
    const HRESULT hr = zr::validateType(variant->vt);
    if (FAILED(hr)) {
        return hr;
    }
    if (ownsArray(variant)) {
        const HRESULT destroyed = SafeArrayDestroy(variant->parray);
        if (FAILED(destroyed)) {
            return destroyed;
        }
    } else if (variant->vt == VT_BSTR) {
        SysFreeString(variant->bstrVal);
    } else if (variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) {
        if (variant->punkVal) {
            variant->punkVal->Release();
        }
    }
    variant->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == source) {
        return zr::validateType(target->vt);
    }
    HRESULT hr = zr::validateType(source->vt);
    if (FAILED(hr)) {
        return hr;
    }
    hr = VariantClear(target);
    if (FAILED(hr)) {
        return hr;
    }
    *target = *source;
    if (ownsArray(source)) {
        hr = SafeArrayCopy(source->parray, &target->parray);
    } else if (source->vt == VT_BSTR) {
        // A null string becomes an empty one.
        target->bstrVal = SysAllocStringByteLen(reinterpret_cast<const char*>(source->bstrVal),
                                                SysStringByteLen(source->bstrVal));
        hr = target->bstrVal ? S_OK : E_OUTOFMEMORY;
    } else if (source->vt == VT_UNKNOWN || source->vt == VT_DISPATCH) {
        if (source->punkVal) {
            source->punkVal->AddRef();
        }
    }
    if (FAILED(hr)) {
        target->vt = VT_EMPTY;
    }
    return hr;
}

}  // extern "C"
