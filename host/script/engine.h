// Runs one script on the script engine, with the library's objects and the globals of scripts.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/script/limits.h"
#include "host/token/module_loading.h"
#include "host/token/pin.h"

struct duk_hthread;

namespace zr::host {

class Console;
class LineEditor;
struct ScriptContext;

/// Where the source of a script was read.
enum class ScriptOrigin { kFile, kStandardInput, kCommandLine };

/// A script, and what it is given.
struct Script {
    /// Its name in messages; the path of a file, beside which the script's modules are.
    std::string name;
    /// UTF-8; a byte order mark and a first line "#!..." are skipped.
    std::string_view source;
    /// UTF-8; the global array "arguments".
    std::vector<std::string> arguments = {};
    ScriptOrigin origin = ScriptOrigin::kFile;
    /// Whether its objects are called by GetIDsOfNames and Invoke.
    bool isLateBound = false;
    /// What readPin returns at its first call.
    std::optional<Pin> pin = {};
    /// Of the global provider: which module it loads, and the module if it is loaded already.
    ModuleOptions moduleOptions = {};
    std::shared_ptr<LoadedModule> module = {};
};

/// An engine for one script.
class ScriptEngine {
public:
    /// @param limits  apply from construction to destruction.
    explicit ScriptEngine(Console& console, const ScriptLimits& limits = {});
    ~ScriptEngine();
    ScriptEngine(const ScriptEngine&) = delete;
    ScriptEngine& operator=(const ScriptEngine&) = delete;

    /// Runs a script to its end and releases the objects it still holds. To be called once.
    /// @return the exit code: what the script gave to exit, else 0; 1 after an error that the script
    ///         did not catch, and when its time was up; interruptionExitCode() after an
    ///         interruption. The error is then on standard error: a line
    ///         "FILE:LINE: message" and, indented, what explains it and who called.
    int run(Script script);

    /// Runs statements that the user types, or that standard input contains, to its end. The time
    /// limit is that of each statement. To be called once, instead of run.
    /// @param script  its name, its PIN and its module; it has no source.
    /// @param editor  null: lines of standard input.
    /// @return the exit code: what a statement gave to exit, else 0; 1 when a statement failed and
    ///         standard input is not a terminal.
    int converse(Script script, LineEditor* editor);

private:
    /// Takes what the script is given.
    void take(Script& script);
    /// Runs the finalizers and releases the objects.
    void close();
    /// Writes the report of the first failure and ignores later ones; on any thread.
    /// @param text  without control characters but line ends.
    void report(const std::string& text);
    /// Reports and ends the process, also when the report cannot be written; on any thread.
    [[noreturn]] void endProcess(const std::string& text);

    Console& m_console;
    bool m_mayEndProcess;
    std::unique_ptr<ScriptContext> m_context;
    duk_hthread* m_heap;
    std::mutex m_reporting;
    bool m_isReported = false;
};

}  // namespace zr::host
