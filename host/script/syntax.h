// Compiles source text, and explains syntax errors of source that is too new for the engine.
#pragma once

#include <duktape.h>

#include <string>
#include <string_view>

namespace zr::host {

/// Compiles source text; the name of its file is on top of the stack and is replaced by the
/// function. Throws what the engine throws; a syntax error gets an explanation.
/// @param flags  DUK_COMPILE_*.
void compileSource(duk_context* script, std::string_view source, duk_uint_t flags);

/// The explanation of the error at an index.
/// @return empty when it has none.
std::string explanationAt(duk_context* script, duk_idx_t index);

/// What a line of source contains that is newer than the engine.
/// @return its name, as "an arrow function"; null when nothing is found.
const char* findNewerSyntax(std::string_view line);

}  // namespace zr::host
