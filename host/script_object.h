// Objects of the library as script objects.
//
// The script holds a proxy. Reading a name from it asks the object's GetIDsOfNames; a name that the
// object knows is a function, which calls the member through Invoke. The reference is released when
// the script engine collects the proxy.
#pragma once

#include <duktape.h>

#include <cstdint>
#include <unordered_map>

#include "console.h"
#include "library.h"
#include "script_limits.h"
#include "script_watchdog.h"

namespace zr::host {

/// What the functions that a script calls work with; kept beside the script engine's heap.
struct ScriptContext {
    Console& console;
    ScriptUse use = ScriptUse(ScriptLimits());
    LibraryCalls libraryCalls = 0;
    /// The script's objects by the number under which its side of them is marked. A script that
    /// tampers with its side can at most name another live object.
    std::unordered_map<std::uint32_t, ComRef<IDispatch>> objects = {};
    std::uint32_t lastNumber = 0;
};

/// The context that belongs to an engine.
ScriptContext& contextOf(duk_context* script);

/// Prepares an engine for wrapped objects and adds the global constructor TokenProvider.
void addObjectSupport(duk_context* script);

/// Pushes a new script object that owns the reference.
void pushObject(duk_context* script, ComRef<IDispatch> object);

/// The object behind a wrapped value.
/// @return null when the value is no wrapped object or its reference is gone.
ComRef<IDispatch> objectAt(duk_context* script, duk_idx_t index);

/// Throws the engine's own error into the script when its time is up. For functions that a script
/// may call without the engine asking in between.
void stopInTime(duk_context* script);

/// Throws an error into the script, never returning; kind is one of DUK_ERR_*.
duk_ret_t throwError(duk_context* script, duk_errcode_t kind, const std::string& message);

}  // namespace zr::host
