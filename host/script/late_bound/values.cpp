// Conversion between script values and automation variants.
#include "host/script/late_bound/values.h"

#include <cstring>
#include <limits>
#include <string>

#include "host/script/late_bound/bound_object.h"
#include "host/script/script_text.h"

namespace zr::host {
namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
constexpr VARTYPE kTextArray = VT_ARRAY | VT_BSTR;

zrkey::Variant readText(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_get_lstring(script, index, &size);
    return zrkey::Variant::fromText(fromScriptText({text, size}));
}

std::optional<zrkey::Variant> readBytes(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const void* bytes = duk_get_buffer_data(script, index, &size);
    if (size > static_cast<duk_size_t>(std::numeric_limits<LONG>::max())) {
        return std::nullopt;
    }
    zrkey::ByteArray array(std::string_view(static_cast<const char*>(bytes), size));
    zrkey::Variant value;
    value.reset(array.release());
    return value;
}

void pushText(duk_context* script, BSTR text) {
    const ErasedBytes bytes = toScriptText(text, SysStringLen(text));
    duk_push_lstring(script, bytes.data(), bytes.size());
}

void pushBytes(duk_context* script, SAFEARRAY* array) {
    const zrkey::ArrayLock lock(array);
    void* bytes = duk_push_fixed_buffer(script, lock.size());
    if (lock.size() > 0) {
        std::memcpy(bytes, lock.data(), lock.size());
    }
    duk_push_buffer_object(script, -1, 0, lock.size(), DUK_BUFOBJ_UINT8ARRAY);
    duk_remove(script, -2);
}

void pushTexts(duk_context* script, SAFEARRAY* array) {
    const zrkey::ArrayLock lock(array);
    const BSTR* texts = static_cast<const BSTR*>(lock.data());
    const duk_idx_t list = duk_push_array(script);
    for (std::size_t i = 0; i < lock.size(); ++i) {
        pushText(script, texts[i]);
        duk_put_prop_index(script, list, static_cast<duk_uarridx_t>(i));
    }
}

bool pushNumber(duk_context* script, const zrkey::Variant& value) {
    double number = 0;
    if (const std::optional<double> real = value.toReal()) {
        number = *real;
    } else if (const std::optional<long long> integer = value.toNumber()) {
        number = static_cast<double>(*integer);
    } else if (value.type() == VT_UI8) {
        number = static_cast<double>(value.get().ullVal);
    } else {
        return false;
    }
    duk_push_number(script, number);
    return true;
}

}  // namespace

std::optional<zrkey::Variant> readArgument(duk_context* script, duk_idx_t index) {
    zrkey::Variant value;
    switch (duk_get_type(script, index)) {
        case DUK_TYPE_UNDEFINED:
            return value;
        case DUK_TYPE_NULL:
            value.get().vt = VT_NULL;
            return value;
        case DUK_TYPE_BOOLEAN:
            return zrkey::Variant::fromBool(duk_get_boolean(script, index) != 0);
        case DUK_TYPE_NUMBER:
            return zrkey::Variant::fromReal(duk_get_number(script, index));
        case DUK_TYPE_STRING:
            if (duk_is_symbol(script, index)) {
                return std::nullopt;
            }
            return readText(script, index);
        default:
            break;
    }
    if (duk_is_buffer_data(script, index)) {
        return readBytes(script, index);
    }
    zrkey::ComRef<IDispatch> object = lateBoundAt(script, index);
    if (!object) {
        return std::nullopt;
    }
    return zrkey::Variant::fromObject(std::move(object));
}

void eraseArgument(zrkey::Variant& value) {
    if (value.type() == VT_BSTR && value.get().bstrVal) {
        secureErase(value.get().bstrVal, SysStringByteLen(value.get().bstrVal));
    } else if (value.type() == kByteArray) {
        const zrkey::ArrayLock lock(value.get().parray);
        if (lock.size() > 0) {
            secureErase(lock.data(), lock.size());
        }
    }
}

bool pushResult(duk_context* script, const zrkey::Variant& value) {
    switch (value.type()) {
        case VT_EMPTY:
            duk_push_undefined(script);
            return true;
        case VT_NULL:
            duk_push_null(script);
            return true;
        case VT_BOOL:
            duk_push_boolean(script, value.toBool().value());
            return true;
        case VT_BSTR:
            pushText(script, value.get().bstrVal);
            return true;
        case VT_DISPATCH:
            if (zrkey::ComRef<IDispatch> object = value.toObject()) {
                pushLateBound(script, std::move(object));
            } else {
                duk_push_null(script);
            }
            return true;
        case kByteArray:
            pushBytes(script, value.get().parray);
            return true;
        case kTextArray:
            pushTexts(script, value.get().parray);
            return true;
        default:
            return pushNumber(script, value);
    }
}

}  // namespace zr::host
