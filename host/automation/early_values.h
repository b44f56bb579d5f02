// The arguments and results of early-bound calls, as variants.
#pragma once

#include <zrkey/zrkey.hpp>

#include <type_traits>

#include "host/automation/variant_view.h"

namespace zr::automation {

// The variants borrow; a client's variant may be by reference.

inline VARIANT toArgument(BSTR text) {
    VARIANT argument = {};
    argument.vt = VT_BSTR;
    argument.bstrVal = text;
    return argument;
}

inline VARIANT toArgument(LONG number) {
    VARIANT argument = {};
    argument.vt = VT_I4;
    argument.lVal = number;
    return argument;
}

inline VARIANT toArgument(const VARIANT& argument) {
    return argument;
}

inline VARIANT toArgument(IDispatch* object) {
    VARIANT argument = {};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = object;
    return argument;
}

// The results of a member have one type, except that there may be none: it then stays zero. Each
// function takes over what the variant owns.

inline void giveResult(const VARIANT& value, VARIANT_BOOL* result) {
    *result = value.vt == VT_BOOL ? value.boolVal : VARIANT_FALSE;
}

inline void giveResult(const VARIANT& value, DOUBLE* result) {
    *result = numberIn(value).value_or(0);
}

inline void giveResult(const VARIANT& value, LONG* result) {
    *result = value.vt == VT_I4 ? value.lVal : 0;
}

inline void giveResult(const VARIANT& value, BSTR* result) {
    *result = value.vt == VT_BSTR ? value.bstrVal : nullptr;
}

inline void giveResult(const VARIANT& value, VARIANT* result) {
    *result = value;
}

/// @tparam Interface  the object's own, derived from IDispatch.
template <class Interface>
requires std::is_base_of_v<IDispatch, Interface>
void giveResult(const VARIANT& value, Interface** result) {
    *result = value.vt == VT_DISPATCH ? static_cast<Interface*>(value.pdispVal) : nullptr;
}

}  // namespace zr::automation
