// Runs one script on the script engine, with the library's objects and a few globals.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/script/limits.h"

struct duk_hthread;

namespace zr::host {

class Console;
struct ScriptContext;

/// An engine for one script.
class ScriptEngine {
public:
    /// @param limits  apply from construction to destruction.
    explicit ScriptEngine(Console& console, const ScriptLimits& limits = {});
    ~ScriptEngine();
    ScriptEngine(const ScriptEngine&) = delete;
    ScriptEngine& operator=(const ScriptEngine&) = delete;

    /// Runs a script to its end and releases the objects it still holds. To be called once.
    /// @param file       the script's name in error messages.
    /// @param source     UTF-8; a byte order mark and a first line "#!..." are skipped.
    /// @param arguments  UTF-8; the script's global array "arguments".
    /// @return false after an error that the script did not catch, and when its time was up. The
    ///         error is then on standard error, as one line "FILE:LINE: message".
    bool run(const std::string& file, std::string_view source,
             const std::vector<std::string>& arguments);

private:
    /// Writes the line of the first failure and ignores later ones; on any thread.
    void report(const std::string& line);
    /// Reports and ends the process, also when the report cannot be written; on any thread.
    [[noreturn]] void endProcess(const std::string& line);

    Console& m_console;
    bool m_mayEndProcess;
    std::unique_ptr<ScriptContext> m_context;
    duk_hthread* m_heap;
    std::mutex m_reporting;
    bool m_isReported = false;
};

}  // namespace zr::host
