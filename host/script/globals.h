// Functions that every script has: print, printError, exit, sleep, readPin, and the object
// environment.
#pragma once

#include <duktape.h>

namespace zr::host {

void addGlobals(duk_context* script);

}  // namespace zr::host
