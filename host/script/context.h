// The state of a running script: the console, the limits, the objects that the script holds.
#pragma once

#include <duktape.h>
#include <zrkey/zrkey.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/objects/object.h"
#include "host/output/console.h"
#include "host/script/limits.h"
#include "host/script/object_registry.h"
#include "host/script/watchdog.h"
#include "host/system/erasing_allocator.h"
#include "host/system/interruption.h"
#include "host/system/secret_memory.h"
#include "host/token/module_loading.h"
#include "host/token/pin.h"

namespace zr::host {

/// The end that a script asks for with exit.
struct ScriptExit {
    /// Set by the first call.
    std::optional<int> code;
    /// Whether the script has to stop now because of it.
    bool isStopping = false;
    /// Whether the script has ended: exit stops nothing but the finalizer that calls it.
    bool isOver = false;
};

/// What a script reads from standard input.
struct ScriptInput {
    bool wasTheScript = false;  ///< the script itself was read from it
    ErasedBytes bytes = {};     ///< read, but not yet taken by the script
    std::size_t taken = 0;      ///< how many of the bytes the script has taken
};

/// Lives as long as the heap of the script engine.
struct ScriptContext {
    Console& console;
    ScriptUse use = ScriptUse(ScriptLimits());
    LibraryCalls libraryCalls = 0;
    bool isLateBound = false;  ///< its objects are called by GetIDsOfNames and Invoke
    // Before the objects, which may outlive the heap: a heap without memory runs no finalizer.
    /// Noted from the first provider on, so that its module is unloaded first.
    std::optional<InterruptionGuard> interruptions = {};
    ModuleOptions moduleOptions = {};           ///< of the global provider
    std::shared_ptr<LoadedModule> module = {};  ///< the global provider's; null: not loaded
    ObjectRegistry<ObjectRef> objects = {};
    ObjectRegistry<zrkey::ComRef<IDispatch>> lateBoundObjects = {};
    /// Reports that the time is up and ends the process; empty where that is not allowed.
    std::function<void()> endProcess = {};
    ScriptExit exit = {};
    ScriptInput input = {};
    std::optional<Pin> pin = {};  ///< given on the command line, not yet taken by the script
    bool hasGivenPin = false;     ///< readPin was called; a shell resets it
    /// From the first PIN on, which stays in the script's memory.
    std::optional<NoCoreDumps> noCoreDumps = {};

    /// Whether the engine has to throw an error until the script is left.
    bool mustStop() { return exit.isStopping || isInterrupted() || use.isTimeUp(); }
};

/// Calls the library for a script.
/// @param call  returns the library's result.
template <class Call>
HRESULT callLibrary(ScriptContext& context, Call call) {
    HRESULT result = S_OK;
    {
        const LibraryCall mark(context.libraryCalls);
        result = call();
    }
    // Outside the call, which is never interrupted: nobody may read the diagnostics.
    context.console.drainDiagnostics();
    return result;
}

/// The context that belongs to an engine.
ScriptContext& contextOf(duk_context* script);

/// Throws an error into the script when its time is up, or it called exit. For functions that a
/// script can call many times before the engine checks this again.
void stopInTime(duk_context* script);

/// Throws an error into the script and never returns; the return type lets callers return it.
/// @param kind  one of DUK_ERR_*.
duk_ret_t throwError(duk_context* script, duk_errcode_t kind, const std::string& message);

}  // namespace zr::host
