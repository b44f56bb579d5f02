// The state of a running script: the console, the limits, the objects that the script holds.
#pragma once

#include <duktape.h>
#include <zrkey/zrkey.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>

#include "host/output/console.h"
#include "host/script/limits.h"
#include "host/script/watchdog.h"

namespace zr::host {

/// The library's objects that a script holds, each under a number. The script objects hold numbers,
/// not pointers: a script that changes a number can at most reach another live object.
class ObjectRegistry {
public:
    /// Returns a number that no object has.
    std::uint32_t newNumber();
    /// Takes over the reference.
    /// @param number  from newNumber.
    void add(std::uint32_t number, zrkey::ComRef<IDispatch> object);
    /// @return null when no object has the number.
    zrkey::ComRef<IDispatch> find(std::uint32_t number) const;
    /// Removes the object.
    /// @return its reference; null when no object has the number.
    zrkey::ComRef<IDispatch> remove(std::uint32_t number);

private:
    std::unordered_map<std::uint32_t, zrkey::ComRef<IDispatch>> m_objects;
    std::uint32_t m_lastNumber = 0;
};

/// Lives as long as the heap of the script engine.
struct ScriptContext {
    Console& console;
    ScriptUse use = ScriptUse(ScriptLimits());
    LibraryCalls libraryCalls = 0;
    ObjectRegistry objects = {};
    /// Reports that the time is up and ends the process; empty where that is not allowed.
    std::function<void()> endProcess = {};
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

/// Throws the engine's timeout error into the script when its time is up. For functions that a
/// script can call many times before the engine checks the time again.
void stopInTime(duk_context* script);

/// Throws an error into the script and never returns; the return type lets callers return it.
/// @param kind  one of DUK_ERR_*.
duk_ret_t throwError(duk_context* script, duk_errcode_t kind, const std::string& message);

}  // namespace zr::host
