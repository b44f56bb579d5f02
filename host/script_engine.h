// Runs one script on the script engine, with the library's objects and a few globals at hand.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "script_limits.h"

struct duk_hthread;

namespace zr::host {

class Console;
struct ScriptContext;

/// One script world. Whatever the script still holds is released with it.
class ScriptEngine {
public:
    /// @param limits  for the whole life of the engine.
    explicit ScriptEngine(Console& console, const ScriptLimits& limits = {});
    ~ScriptEngine();
    ScriptEngine(const ScriptEngine&) = delete;
    ScriptEngine& operator=(const ScriptEngine&) = delete;

    /// Runs a script to its end.
    /// @param file       its name in error messages.
    /// @param source     UTF-8; a byte order mark and a first line "#!..." are skipped.
    /// @param arguments  UTF-8; the script's global array "arguments".
    /// @return false after an error that the script did not catch; it is on standard error then, as
    ///         "FILE:LINE: message", one line whatever it holds.
    bool run(const std::string& file, std::string_view source,
             const std::vector<std::string>& arguments);

private:
    Console& m_console;
    std::unique_ptr<ScriptContext> m_context;
    duk_hthread* m_heap;
};

}  // namespace zr::host
