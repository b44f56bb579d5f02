// Conversion between the VARIANTs of Automation clients and the values of the object model.
#pragma once

#include <zrkey/zrkey.hpp>

#include "host/objects/member.h"

namespace zr::automation {

/// A value that a parameter does not accept. Automation has a result for it; early-bound clients
/// get the text.
struct WrongValue {
    HRESULT result;  ///< DISP_E_TYPEMISMATCH, or DISP_E_OVERFLOW for a number that is too large
    const char* problem;  ///< "is not a text", as other front ends say it
};

/// Whether a client left the argument out: DISP_E_PARAMNOTFOUND.
bool isNotGiven(const VARIANT& variant);
/// The same, or VT_EMPTY: what an optional argument may be.
bool isMissing(const VARIANT& variant);

/// Reads an argument. May call a client's object, which may call us: hold no lock.
/// @param variant  borrowed; also by reference.
/// @throws WrongValue, std::bad_alloc
host::Value toValue(const VARIANT& variant, host::ParameterKind kind);

/// Stores a result.
/// @param isObject  whether the member returns an object; a null is then a null object.
/// @param result    overwritten. Untouched after an exception.
/// @throws std::bad_alloc
void store(const host::Value& value, bool isObject, VARIANT& result);

}  // namespace zr::automation
