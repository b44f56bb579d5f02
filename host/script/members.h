// Members of the library's objects as functions of script objects.
//
// Reading a name from a script object asks the library's object for it (GetIDsOfNames). A name that
// the object knows is a function, which calls the member through Invoke.
#pragma once

#include <duktape.h>

namespace zr::host {

/// Gives the script objects of an engine their members, and the engine the global constructor
/// TokenProvider. To be called once, before the first script object is made.
void addObjectSupport(duk_context* script);

}  // namespace zr::host
