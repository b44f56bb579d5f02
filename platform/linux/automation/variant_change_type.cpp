// VariantChangeType: finds the value of the source and converts it to the requested type.
#include <algorithm>
#include <string_view>

#include "platform/linux/automation/number.h"
#include "platform/linux/automation/number_text.h"
#include "platform/linux/automation/variant.h"

namespace {

constexpr VARTYPE kBytes = VT_ARRAY | VT_UI1;
constexpr USHORT kKnownFlags = VARIANT_NOVALUEPROP | VARIANT_ALPHABOOL | VARIANT_LOCALBOOL;
constexpr LCID kUserDefaultLocale = 0x400;

// The value that a variant holds or refers to, as a shallow copy that owns nothing.
HRESULT dereference(const VARIANT& source, VARIANT* value) {
    *value = source;
    if ((source.vt & VT_BYREF) == 0) {
        return S_OK;
    }
    if (!source.byref) {
        return DISP_E_TYPEMISMATCH;
    }
    if (source.vt == (VT_BYREF | VT_VARIANT)) {
        const VARIANT& inner = *source.pvarVal;
        if (FAILED(zr::validateType(inner.vt))) {
            return DISP_E_BADVARTYPE;
        }
        return inner.vt == source.vt ? E_INVALIDARG : dereference(inner, value);
    }
    value->vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    value->ullVal = 0;
    std::size_t size = sizeof(void*);
    switch (value->vt) {
        case VT_I1:
        case VT_UI1:
            size = 1;
            break;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            size = 2;
            break;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            size = 4;
            break;
        case VT_DECIMAL:
            // This platform has no decimals.
            return DISP_E_TYPEMISMATCH;
        default:
            break;
    }
    std::memcpy(&value->ullVal, source.byref, size);
    return S_OK;
}

HRESULT ownText(BSTR text, VARIANT* target) {
    target->vt = VT_BSTR;
    target->bstrVal = text;
    return text ? S_OK : E_OUTOFMEMORY;
}

HRESULT toText(const VARIANT& source, USHORT flags, VARIANT* target) {
    const zr::Number number = zr::numberOf(source);
    switch (source.vt) {
        case VT_EMPTY:
            return ownText(SysAllocString(OLESTR("")), target);
        case VT_R4:
            return ownText(zr::textOfReal(number.real, 7), target);
        case VT_R8:
            return ownText(zr::textOfReal(number.real, 15), target);
        case VT_CY:
            return ownText(zr::textOfCurrency(source.cyVal.int64), target);
        case VT_DATE:
            // The format of a date depends on the locale, and there is none here.
            return DISP_E_TYPEMISMATCH;
        case VT_BOOL:
            if ((flags & (VARIANT_ALPHABOOL | VARIANT_LOCALBOOL)) != 0) {
                return ownText(SysAllocString(source.boolVal != VARIANT_FALSE ? OLESTR("True")
                                                                              : OLESTR("False")),
                               target);
            }
            break;
        default:
            break;
    }
    return ownText(zr::textOfInteger(number.negative, number.magnitude), target);
}

bool equalsIgnoringCase(std::u16string_view text, std::u16string_view lower) {
    return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                      [](char16_t a, char16_t b) {
                          return (a >= u'A' && a <= u'Z' ? a + (u'a' - u'A') : a) == b;
                      });
}

HRESULT textToBool(const OLECHAR* text, VARIANT* target) {
    const std::u16string_view word(text);
    const bool isTrue = equalsIgnoringCase(word, u"true") || word == u"#TRUE#";
    const bool isFalse = equalsIgnoringCase(word, u"false") || word == u"#FALSE#";
    if (!isTrue && !isFalse) {
        return zr::storeText(text, VT_BOOL, target);
    }
    target->vt = VT_BOOL;
    target->boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT fromText(BSTR source, VARTYPE type, VARIANT* target) {
    const OLECHAR* text = source ? source : OLESTR("");
    switch (type) {
        case VT_BOOL:
            return textToBool(text, target);
        case VT_DATE:
            // As in toText: there is no locale.
            return DISP_E_TYPEMISMATCH;
        default:
            return zr::storeText(text, type, target);
    }
}

HRESULT textToBytes(BSTR text, VARIANT* target) {
    SAFEARRAYBOUND bound = {SysStringByteLen(text), 0};
    SAFEARRAY* bytes = SafeArrayCreate(VT_UI1, 1, &bound);
    if (!bytes) {
        return E_OUTOFMEMORY;
    }
    if (bound.cElements > 0) {
        std::memcpy(bytes->pvData, text, bound.cElements);
    }
    target->vt = kBytes;
    target->parray = bytes;
    return S_OK;
}

HRESULT bytesToText(const SAFEARRAY* bytes, VARIANT* target) {
    if (!bytes || bytes->cDims != 1 || bytes->cbElements != 1) {
        return E_INVALIDARG;
    }
    return ownText(SysAllocStringByteLen(static_cast<const char*>(bytes->pvData),
                                         bytes->rgsabound[0].cElements),
                   target);
}

HRESULT toInterface(IUnknown* object, VARTYPE type, VARIANT* target) {
    target->vt = type;
    if (!object) {
        return S_OK;
    }
    const IID& iid = type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
    void* found = nullptr;
    const HRESULT hr = object->QueryInterface(iid, &found);
    target->punkVal = SUCCEEDED(hr) ? static_cast<IUnknown*>(found) : nullptr;
    return hr;
}

HRESULT convert(const VARIANT& source, USHORT flags, VARTYPE type, VARIANT* target);

HRESULT defaultProperty(IDispatch* object, VARIANT* value) {
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    VariantInit(value);
    const HRESULT hr = object->Invoke(0, IID_NULL, kUserDefaultLocale, DISPATCH_PROPERTYGET, &none,
                                      value, nullptr, nullptr);
    return FAILED(hr) ? DISP_E_TYPEMISMATCH : S_OK;
}

// Converts the default property of an object, which may be an object again.
HRESULT fromObject(IDispatch* object, USHORT flags, VARTYPE type, VARIANT* target) {
    constexpr int kMaxObjects = 32;
    VARIANT held;
    VariantInit(&held);
    VARIANT view;
    VariantInit(&view);
    view.vt = VT_DISPATCH;
    view.pdispVal = object;
    HRESULT hr = S_OK;
    for (int i = 0; SUCCEEDED(hr) && view.vt == VT_DISPATCH; ++i) {
        if (!view.pdispVal || i == kMaxObjects) {
            hr = DISP_E_BADVARTYPE;
            break;
        }
        VARIANT value;
        hr = defaultProperty(view.pdispVal, &value);
        VariantClear(&held);
        held = value;
        if (SUCCEEDED(hr)) {
            hr = dereference(held, &view);
        }
    }
    if (SUCCEEDED(hr)) {
        hr = convert(view, flags, type, target);
    }
    VariantClear(&held);
    return hr;
}

HRESULT convert(const VARIANT& source, USHORT flags, VARTYPE type, VARIANT* target) {
    if (source.vt == type) {
        return VariantCopy(target, &source);
    }
    const bool interface = source.vt == VT_UNKNOWN || source.vt == VT_DISPATCH;
    if (type == VT_UNKNOWN || type == VT_DISPATCH) {
        return interface ? toInterface(source.punkVal, type, target) : DISP_E_TYPEMISMATCH;
    }
    if (source.vt == VT_DISPATCH && (flags & VARIANT_NOVALUEPROP) != 0) {
        return DISP_E_TYPEMISMATCH;
    }
    if (source.vt == VT_NULL || source.vt == VT_ERROR) {
        return DISP_E_TYPEMISMATCH;
    }
    if ((source.vt & VT_ARRAY) != 0) {
        return source.vt == kBytes && type == VT_BSTR ? bytesToText(source.parray, target)
                                                      : DISP_E_TYPEMISMATCH;
    }
    if (type == VT_EMPTY || type == VT_NULL) {
        target->vt = type;
        return S_OK;
    }
    if (source.vt == VT_BSTR && type == kBytes) {
        return textToBytes(source.bstrVal, target);
    }
    if (type != VT_BSTR && !zr::isNumeric(type)) {
        return DISP_E_TYPEMISMATCH;
    }
    if (source.vt == VT_DISPATCH) {
        return fromObject(source.pdispVal, flags, type, target);
    }
    if (source.vt == VT_BSTR) {
        return fromText(source.bstrVal, type, target);
    }
    if (source.vt != VT_EMPTY && !zr::isNumeric(source.vt)) {
        return DISP_E_TYPEMISMATCH;
    }
    return type == VT_BSTR ? toText(source, flags, target)
                           : zr::storeNumber(zr::numberOf(source), type, target);
}

}  // namespace

extern "C" HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags,
                                     VARTYPE type) {
    if (!target || !source || (flags & ~kKnownFlags) != 0) {
        return E_INVALIDARG;
    }
    if (FAILED(zr::validateType(source->vt)) || FAILED(zr::validateType(type))) {
        return DISP_E_BADVARTYPE;
    }
    VARIANT value;
    HRESULT hr = dereference(*source, &value);
    if (FAILED(hr)) {
        return hr;
    }
    VARIANT result;
    VariantInit(&result);
    hr = convert(value, flags, type, &result);
    if (FAILED(hr)) {
        return hr;
    }
    hr = VariantClear(target);
    if (FAILED(hr)) {
        VariantClear(&result);
        return hr;
    }
    *target = result;
    return S_OK;
}
