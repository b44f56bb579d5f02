// Conversion between script values and automation variants.
#include "script_values.h"

#include <cstring>
#include <new>
#include <string>

#include "script_object.h"
#include "text.h"
#include "variant.h"

namespace zr::host {
namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
constexpr VARTYPE kTextArray = VT_ARRAY | VT_BSTR;

bool readText(duk_context* script, duk_idx_t index, VARIANT& out) {
    duk_size_t size = 0;
    const char* text = duk_get_lstring(script, index, &size);
    const OleString wide = toUtf16({text, size});
    out.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (out.bstrVal == nullptr) {
        throw std::bad_alloc();
    }
    out.vt = VT_BSTR;
    return true;
}

bool readBytes(duk_context* script, duk_idx_t index, VARIANT& out) {
    duk_size_t size = 0;
    const void* bytes = duk_get_buffer_data(script, index, &size);
    return makeByteArray({static_cast<const char*>(bytes), size}, out);
}

void pushText(duk_context* script, BSTR text) {
    const std::string bytes =
        toScriptText({text != nullptr ? text : OLESTR(""), SysStringLen(text)});
    duk_push_lstring(script, bytes.data(), bytes.size());
}

void pushBytes(duk_context* script, SAFEARRAY* array) {
    const ArrayAccess access(array);
    void* bytes = duk_push_fixed_buffer(script, access.size());
    if (access.size() > 0) {
        std::memcpy(bytes, access.data(), access.size());
    }
    duk_push_buffer_object(script, -1, 0, access.size(), DUK_BUFOBJ_UINT8ARRAY);
    duk_remove(script, -2);
}

void pushTexts(duk_context* script, SAFEARRAY* array) {
    const ArrayAccess access(array);
    const BSTR* texts = static_cast<const BSTR*>(access.data());
    const duk_idx_t list = duk_push_array(script);
    for (std::size_t i = 0; i < access.size(); ++i) {
        pushText(script, texts[i]);
        duk_put_prop_index(script, list, static_cast<duk_uarridx_t>(i));
    }
}

bool pushNumber(duk_context* script, const VARIANT& value) {
    double number = 0;
    switch (value.vt) {
        case VT_I1:
            number = static_cast<signed char>(value.cVal);
            break;
        case VT_UI1:
            number = value.bVal;
            break;
        case VT_I2:
            number = value.iVal;
            break;
        case VT_UI2:
            number = value.uiVal;
            break;
        case VT_I4:
            number = value.lVal;
            break;
        case VT_INT:
            number = value.intVal;
            break;
        case VT_UI4:
            number = value.ulVal;
            break;
        case VT_UINT:
            number = value.uintVal;
            break;
        case VT_I8:
            number = static_cast<double>(value.llVal);
            break;
        case VT_UI8:
            number = static_cast<double>(value.ullVal);
            break;
        case VT_R4:
            number = value.fltVal;
            break;
        case VT_R8:
            number = value.dblVal;
            break;
        default:
            return false;
    }
    duk_push_number(script, number);
    return true;
}

}  // namespace

VariantList::VariantList(std::size_t count) : m_variants(count) {
    for (VARIANT& variant : m_variants) {
        VariantInit(&variant);
    }
}

VariantList::~VariantList() {
    for (VARIANT& variant : m_variants) {
        VariantClear(&variant);
    }
}

std::size_t argumentSize(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    if (duk_is_string(script, index)) {
        // No byte makes more than one unit.
        duk_get_lstring(script, index, &size);
        size *= sizeof(OLECHAR);
    } else if (duk_is_buffer_data(script, index)) {
        duk_get_buffer_data(script, index, &size);
    }
    return sizeof(VARIANT) + size;
}

bool readArgument(duk_context* script, duk_idx_t index, VARIANT& out) {
    switch (duk_get_type(script, index)) {
        case DUK_TYPE_UNDEFINED:
            return true;
        case DUK_TYPE_NULL:
            out.vt = VT_NULL;
            return true;
        case DUK_TYPE_BOOLEAN:
            out.vt = VT_BOOL;
            out.boolVal = duk_get_boolean(script, index) ? VARIANT_TRUE : VARIANT_FALSE;
            return true;
        case DUK_TYPE_NUMBER:
            out.vt = VT_R8;
            out.dblVal = duk_get_number(script, index);
            return true;
        case DUK_TYPE_STRING:
            return !duk_is_symbol(script, index) && readText(script, index, out);
        default:
            break;
    }
    if (duk_is_buffer_data(script, index)) {
        return readBytes(script, index, out);
    }
    ComRef<IDispatch> object = objectAt(script, index);
    if (!object) {
        return false;
    }
    out.vt = VT_DISPATCH;
    out.pdispVal = object.release();
    return true;
}

bool pushResult(duk_context* script, VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            duk_push_undefined(script);
            return true;
        case VT_NULL:
            duk_push_null(script);
            return true;
        case VT_BOOL:
            duk_push_boolean(script, value.boolVal != VARIANT_FALSE);
            return true;
        case VT_BSTR:
            pushText(script, value.bstrVal);
            return true;
        case VT_DISPATCH:
            if (value.pdispVal == nullptr) {
                duk_push_null(script);
            } else {
                ComRef<IDispatch> object;
                object.reset(value.pdispVal);
                value.vt = VT_EMPTY;
                pushObject(script, std::move(object));
            }
            return true;
        case kByteArray:
            pushBytes(script, value.parray);
            return true;
        case kTextArray:
            pushTexts(script, value.parray);
            return true;
        default:
            return pushNumber(script, value);
    }
}

}  // namespace zr::host
