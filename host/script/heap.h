// The script engine's heap, which keeps to a script's limits.
#pragma once

#include <duktape.h>

#include "host/script/context.h"

namespace zr::host {

/// Makes a heap of the script engine that asks the context's ScriptUse for memory and time.
/// @param context  outlives the heap.
/// @param fatal    called with the context on an error of the engine that no script can catch.
/// @return null when the heap cannot be made.
duk_context* createLimitedHeap(ScriptContext& context, duk_fatal_function fatal);

}  // namespace zr::host

/// Makes the engine ask before its next instruction whether the script has to stop.
extern "C" void zrAskSoon(duk_context* script);
