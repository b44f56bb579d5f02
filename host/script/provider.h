// The global provider of scripts, with the module that the command line or the environment names.
#pragma once

#include <duktape.h>

namespace zr::host {

/// Adds it. The module is loaded when the script first uses it, if it is not loaded yet.
void addProvider(duk_context* script);

}  // namespace zr::host
