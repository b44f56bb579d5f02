// zrapi::ZComVariant: construction, assignment and transfer.
#include "runtime/zcom_variant.h"

#include "runtime/diagnostics.h"
#include "runtime/string_convert.h"

namespace zrapi {

ZComVariant::ZComVariant() : VARIANT() {
    VariantInit(this);
}

ZComVariant::ZComVariant(const VARIANT& source) : ZComVariant() {
    InternalCopy(&source);
}

ZComVariant::ZComVariant(const ZComVariant& source) : ZComVariant() {
    InternalCopy(&source);
}

ZComVariant::~ZComVariant() {
    VariantClear(this);
}

ZComVariant::ZComVariant(int source, VARTYPE type) : ZComVariant() {
    if (type == VT_I4) {
        Put(type, lVal, source);
    } else if (type == VT_INT) {
        Put(type, intVal, source);
    } else {
        PutError(E_INVALIDARG);
        return;
    }
    zr::consoleOutFormat("[ZComVariant::ZComVariant(int nSrc, VARTYPE vtSrc)] ... vtSrc = [%d]\n",
                         type);
}

ZComVariant::ZComVariant(long source, VARTYPE type) : ZComVariant() {
    if (type == VT_I4) {
        Put(type, lVal, source);
    } else if (type == VT_ERROR) {
        Put(type, scode, source);
    } else {
        PutError(E_INVALIDARG);
    }
}

ZComVariant::ZComVariant(unsigned int source, VARTYPE type) : ZComVariant() {
    if (type == VT_UI4) {
        Put(type, ulVal, source);
    } else if (type == VT_UINT) {
        Put(type, uintVal, source);
    } else {
        PutError(E_INVALIDARG);
    }
}

ZComVariant::ZComVariant(double source, VARTYPE type) : ZComVariant() {
    if (type == VT_R8) {
        Put(type, dblVal, source);
    } else if (type == VT_DATE) {
        Put(type, date, source);
    } else {
        PutError(E_INVALIDARG);
    }
}

ZComVariant& ZComVariant::operator=(const VARIANT& source) {
    if (this != &source) {
        InternalCopy(&source);
    }
    return *this;
}

ZComVariant& ZComVariant::operator=(const ZComVariant& source) {
    return *this = static_cast<const VARIANT&>(source);
}

ZComVariant& ZComVariant::operator=(const OLECHAR* source) {
    const BSTR string = SysAllocString(source);
    return PutString(string, source && !string);
}

ZComVariant& ZComVariant::operator=(const char* source) {
    const BSTR string = ZSysAllocUTF8String(source);
    return PutString(string, source && !string);
}

ZComVariant& ZComVariant::operator=(const ZComBSTR& source) {
    const BSTR string = source.Copy();
    return PutString(string, static_cast<BSTR>(source) && !string);
}

ZComVariant& ZComVariant::operator=(IDispatch* source) {
    if (source) {
        source->AddRef();
    }
    return Put(VT_DISPATCH, pdispVal, source);
}

ZComVariant& ZComVariant::operator=(IUnknown* source) {
    if (source) {
        source->AddRef();
    }
    return Put(VT_UNKNOWN, punkVal, source);
}

ZComVariant& ZComVariant::operator=(const SAFEARRAY* source) {
    if (!source) {
        return PutError(E_INVALIDARG);
    }
    SAFEARRAY* copy = nullptr;
    HRESULT result = SafeArrayCopy(const_cast<SAFEARRAY*>(source), &copy);
    if (FAILED(result)) {
        return PutError(result);
    }
    VARTYPE element = VT_EMPTY;
    result = SafeArrayGetVartype(copy, &element);
    if (FAILED(result)) {
        SafeArrayDestroy(copy);
        return PutError(result);
    }
    return Put(static_cast<VARTYPE>(VT_ARRAY | element), parray, copy);
}

HRESULT ZComVariant::Clear() {
    return VariantClear(this);
}

HRESULT ZComVariant::Copy(const VARIANT* source) {
    return VariantCopy(this, const_cast<VARIANT*>(source));
}

HRESULT ZComVariant::InternalClear() {
    const HRESULT result = Clear();
    if (FAILED(result)) {
        PutError(result);
    }
    return result;
}

HRESULT ZComVariant::InternalCopy(const VARIANT* source) {
    const HRESULT result = Copy(source);
    if (FAILED(result)) {
        // VariantCopy refuses an invalid source before it clears the old content.
        Clear();
        PutError(result);
    }
    return result;
}

HRESULT ZComVariant::CopyTo(BSTR* out) const {
    if (vt != VT_BSTR) {
        return DISP_E_TYPEMISMATCH;
    }
    if (!out) {
        return E_POINTER;
    }
    *out = SysAllocStringByteLen(reinterpret_cast<const char*>(bstrVal), SysStringByteLen(bstrVal));
    return *out ? S_OK : E_OUTOFMEMORY;
}

HRESULT ZComVariant::Attach(VARIANT* source) {
    if (!source) {
        return E_INVALIDARG;
    }
    const HRESULT result = Clear();
    if (FAILED(result)) {
        return result;
    }
    static_cast<VARIANT&>(*this) = *source;
    source->vt = VT_EMPTY;
    return S_OK;
}

HRESULT ZComVariant::Detach(VARIANT* target) {
    if (!target) {
        return E_POINTER;
    }
    const HRESULT result = VariantClear(target);
    if (FAILED(result)) {
        return result;
    }
    *target = static_cast<VARIANT&>(*this);
    vt = VT_EMPTY;
    return S_OK;
}

HRESULT ZComVariant::ChangeType(VARTYPE type, const VARIANT* source) {
    return VariantChangeType(this, const_cast<VARIANT*>(source ? source : this), 0, type);
}

ZComVariant& ZComVariant::PutReference(VARTYPE type, void* target) {
    return Put(static_cast<VARTYPE>(VT_BYREF | type), byref, target);
}

ZComVariant& ZComVariant::PutString(BSTR string, bool failed) {
    return failed ? PutError(E_OUTOFMEMORY) : Put(VT_BSTR, bstrVal, string);
}

ZComVariant& ZComVariant::PutError(HRESULT result) {
    return Put(VT_ERROR, scode, result);
}

}  // namespace zrapi
