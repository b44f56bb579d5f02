// The object model in scripts: the constructor TokenProvider, and objects whose members are those
// of host/objects.
//
// The objects of a class share a prototype with a function for each member. When the engine collects
// an object, its reference is released.
#pragma once

#include <duktape.h>

#include "host/objects/object.h"

namespace zr::host {

/// Adds the classes to an engine. Call it once, before the first object is pushed.
void addObjectModel(duk_context* script);

/// Pushes a new script object that owns the reference.
void pushObject(duk_context* script, ObjectRef object);

/// The object behind a script value.
/// @return null when the value is not such an object, or its reference was released.
ObjectRef objectAt(duk_context* script, duk_idx_t index);

}  // namespace zr::host
