// Values of a script as the shell shows them.
#pragma once

#include <duktape.h>

#include <string>

namespace zr::host {

/// A value on one line: texts in quotes, the first bytes of byte arrays, the first elements of
/// arrays and objects, the library's objects by their kind. Getters may run, and throw.
std::string shownValue(duk_context* script, duk_idx_t index);

}  // namespace zr::host
