// zrapi::ZComVariant: comparisons, and the size of a value in a stream.
#include <limits>

#include "runtime/string_convert.h"
#include "runtime/value_utils.h"
#include "runtime/zcom_variant.h"

namespace zrapi {
namespace {

constexpr HRESULT kLess = 0;
constexpr HRESULT kEqual = 1;
constexpr HRESULT kGreater = 2;

template <class Value>
HRESULT order(Value a, Value b) {
    return a == b ? kEqual : a < b ? kLess : kGreater;
}

/// Compares a and b as values of a's type; the type of b is not checked.
HRESULT compareByType(const VARIANT& a, const VARIANT& b) {
    switch (a.vt) {
        case VT_I1:
            return order(static_cast<signed char>(a.cVal), static_cast<signed char>(b.cVal));
        case VT_UI2:
            return order(a.uiVal, b.uiVal);
        case VT_UI4:
            return order(a.ulVal, b.ulVal);
        case VT_UI8:
            return order(a.ullVal, b.ullVal);
        default:
            return ZVariantCompare(&a, &b);
    }
}

}  // namespace

bool ZComVariant::operator==(const VARIANT& other) const {
    if (vt == VT_NULL) {
        return other.vt == VT_NULL;
    }
    return vt == other.vt && compareByType(*this, other) == kEqual;
}

bool ZComVariant::operator==(const ZComVariant& other) const {
    return *this == static_cast<const VARIANT&>(other);
}

bool ZComVariant::operator!=(const VARIANT& other) const {
    return !(*this == other);
}

bool ZComVariant::operator!=(const ZComVariant& other) const {
    return !(*this == other);
}

bool ZComVariant::operator<(const VARIANT& other) const {
    return compareByType(*this, other) == kLess;
}

bool ZComVariant::operator>(const VARIANT& other) const {
    return compareByType(*this, other) == kGreater;
}

HRESULT ZComVariant::VarCmp(VARIANT* a, VARIANT* b, LCID, ULONG) {
    return compareByType(*a, *b);
}

namespace {

/// The size in a stream of a string with its type tag. In 64 bits: it may not fit 32.
ULONGLONG streamSize(BSTR text) {
    constexpr ULONGLONG kPrefixAndTerminator = 6;
    return sizeof(VARTYPE) + (text ? SysStringByteLen(text) + kPrefixAndTerminator
                                   : ZSysStringGetStreamSize(nullptr));
}

}  // namespace

HRESULT ZComVariant::GetSizeMax(ULARGE_INTEGER* size) const {
    if (!size) {
        return E_INVALIDARG;
    }
    if (vt == VT_DISPATCH || vt == VT_UNKNOWN) {
        return E_FAIL;
    }
    if (vt == VT_BSTR) {
        size->QuadPart = streamSize(bstrVal);
        return S_OK;
    }
    ULONG valueSize = 0;
    if (SUCCEEDED(ZVariantGetTypeSize(vt, &valueSize))) {
        size->QuadPart = sizeof(VARTYPE) + valueSize;
        return S_OK;
    }
    ZComVariant text;
    const HRESULT result =
        VariantChangeType(&text, const_cast<ZComVariant*>(this), VARIANT_NOVALUEPROP, VT_BSTR);
    if (FAILED(result)) {
        return result;
    }
    size->QuadPart = streamSize(text.bstrVal);
    return S_OK;
}

ULONG ZComVariant::GetSize() const {
    ULARGE_INTEGER size;
    if (FAILED(GetSizeMax(&size)) || size.QuadPart > std::numeric_limits<ULONG>::max()) {
        return sizeof(VARTYPE);
    }
    return static_cast<ULONG>(size.QuadPart);
}

}  // namespace zrapi
