// What a VARIANT contains, with the references removed.
#include "host/automation/variant_view.h"

#include <cstring>

namespace zr::automation {
namespace {

/// Engines nest two references; a chain that leads back to its beginning has to end somewhere.
constexpr int kMostReferences = 16;
constexpr double kUnitsOfCurrency = 10000;

/// The bytes that a value of a type needs; 0: it is not passed by reference.
std::size_t sizeOf(VARTYPE type) {
    if ((type & ~VT_TYPEMASK) == VT_ARRAY) {
        return sizeof(SAFEARRAY*);
    }
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return 8;
        default:
            return 0;
    }
}

VARIANT illegal() {
    VARIANT view = {};
    view.vt = static_cast<VARTYPE>(VT_ILLEGAL);
    return view;
}

/// What a reference to another type than VT_VARIANT refers to.
VARIANT referredBy(const VARIANT& reference) {
    const auto type = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    VARIANT view = {};
    if (type == VT_DECIMAL) {
        view.decVal = *reference.pdecVal;
    } else if (const std::size_t size = sizeOf(type)) {
        std::memcpy(&view.byref, reference.byref, size);
    } else {
        return illegal();
    }
    view.vt = type;
    return view;
}

std::optional<double> numberIn(DECIMAL decimal) {
    double number = 0;
    return SUCCEEDED(VarR8FromDec(&decimal, &number)) ? std::optional(number) : std::nullopt;
}

}  // namespace

VARIANT viewOf(const VARIANT& variant) {
    const VARIANT* current = &variant;
    for (int i = 0; i < kMostReferences; ++i) {
        if (!(current->vt & VT_BYREF)) {
            return *current;
        }
        if (!current->byref) {
            return illegal();
        }
        if (current->vt != (VT_BYREF | VT_VARIANT)) {
            return referredBy(*current);
        }
        current = current->pvarVal;
    }
    return illegal();
}

std::optional<double> numberIn(const VARIANT& variant) {
    switch (variant.vt) {
        case VT_R4:
            return variant.fltVal;
        case VT_R8:
            return variant.dblVal;
        case VT_CY:
            return static_cast<double>(variant.cyVal.int64) / kUnitsOfCurrency;
        case VT_UI8:
            return static_cast<double>(variant.ullVal);
        case VT_DECIMAL:
            return numberIn(variant.decVal);
        case VT_I1:
            return static_cast<signed char>(variant.cVal);
        case VT_UI1:
            return variant.bVal;
        case VT_I2:
            return variant.iVal;
        case VT_UI2:
            return variant.uiVal;
        case VT_I4:
        case VT_INT:
            return variant.lVal;
        case VT_UI4:
        case VT_UINT:
            return variant.ulVal;
        case VT_I8:
            return static_cast<double>(variant.llVal);
        default:
            return std::nullopt;
    }
}

}  // namespace zr::automation
