// Conversion between script values and values of the object model.
#pragma once

#include <duktape.h>

#include <cstddef>
#include <optional>

#include "host/objects/value.h"

namespace zr::host {

/// The largest number of bytes that a script value can need when it is converted for a call.
std::size_t argumentSize(duk_context* script, duk_idx_t index);

/// Converts an argument: number, string, boolean, null, undefined, object of the library, byte
/// buffer.
/// @return nullopt for a value of another kind.
std::optional<Value> readValue(duk_context* script, duk_idx_t index);

/// Pushes the result of a call; a collection becomes an array.
void pushValue(duk_context* script, const Value& value);

}  // namespace zr::host
