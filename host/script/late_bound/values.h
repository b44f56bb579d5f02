// Conversion between script values and automation variants.
#pragma once

#include <duktape.h>
#include <zrkey/zrkey.hpp>

#include <optional>

namespace zr::host {

/// Converts a script value for a call: number VT_R8, string VT_BSTR, boolean VT_BOOL, null VT_NULL,
/// undefined VT_EMPTY, object of the library VT_DISPATCH, byte buffer VT_ARRAY|VT_UI1.
/// @return nullopt for a value of another kind, and for a byte buffer too large for an array.
std::optional<zrkey::Variant> readArgument(duk_context* script, duk_idx_t index);

/// Overwrites the text or the bytes of a converted value, which may be a PIN.
void eraseArgument(zrkey::Variant& value);

/// Pushes a call's result as a script value.
/// @return false, with nothing pushed, for a type that has no script value.
bool pushResult(duk_context* script, const zrkey::Variant& value);

}  // namespace zr::host
