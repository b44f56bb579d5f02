// Members of the library's objects as functions of script objects, for --late-bound.
//
// When a script reads a name from a script object, the library's object is asked for the name
// (GetIDsOfNames). If it knows the name, the script gets a function that calls the member (Invoke).
#pragma once

#include <duktape.h>

namespace zr::host {

/// Adds the members of script objects and the global constructor TokenProvider to an engine. Call
/// it once, before the first script object is made.
void addLateBoundObjects(duk_context* script);

}  // namespace zr::host
