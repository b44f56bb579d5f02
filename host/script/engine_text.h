// Texts on the stack of the script engine.
#pragma once

#include <duktape.h>

#include <string>
#include <string_view>

#include "host/system/erasing_allocator.h"

namespace zr::host {

/// Pushes a text; a malformed byte becomes U+FFFD. What it takes to convert the text is the script's
/// memory.
void pushText(duk_context* script, std::string_view utf8);

/// A value as a text in UTF-8. Converts the value, which may call the script.
ErasedBytes utf8At(duk_context* script, duk_idx_t index);

/// Whether a value is a text; a symbol is none.
bool isText(duk_context* script, duk_idx_t index);

/// The path that an argument of a function is, in UTF-8. Throws a TypeError when it is not a text,
/// or contains a NUL: the system would use the part before it.
/// @param function  its name, for the error.
std::string pathArgument(duk_context* script, duk_idx_t index, const std::string& function);

}  // namespace zr::host
