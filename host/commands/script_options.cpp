// The options of the commands that run scripts: run and shell.
#include "host/commands/script_options.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cmath>
#include <memory>

#include "host/commands/command_frame.h"
#include "host/system/system.h"
#include "host/token/pin_source.h"

namespace zr::host {
namespace {

/// @param needed  what the value has to be, for the message.
template <class Number>
CLI::Validator isInRange(Number first, Number last, const std::string& needed) {
    const auto check = [=](const std::string& text) -> std::string {
        const bool isGood = CLI::Range(first, last)(text).empty();
        return isGood ? "" : needed + " is required";
    };
    return {check, ""};
}

}  // namespace

void addScriptOptions(CLI::App& command, ScriptOptions& options, const char* timed) {
    command.add_flag("-v,--verbose", options.verbose,
                     "Shows the library's diagnostics on standard error");
    command.add_flag("--late-bound", options.isLateBound,
                     "Calls the library's objects by GetIDsOfNames and Invoke");
    addModuleOptions(command, options.module);
    command
        .add_option("--time-limit", options.seconds,
                    std::string("Ends ").append(timed).append(" after this many seconds"))
        ->type_name("SECONDS")
        ->check(isInRange(0.001, 1e6, "a number of seconds from 0.001 to 1000000"));
    command
        .add_option("--memory-limit", options.mebibytes,
                    "Gives the script at most this many MiB of memory")
        ->type_name("MIB")
        ->check(isInRange(1, 1 << 20, "a number of MiB from 1 to 1048576"));
    addPinSource(command, "--pin", options.pin,
                 "The source of the first PIN that readPin() returns");
}

void checkScriptOptions(const ScriptOptions& options) {
    if (std::isnan(options.seconds)) {
        // The range check accepts it.
        throw CLI::ValidationError("--time-limit", "a number is required");
    }
}

ScriptLimits limitsOf(const ScriptOptions& options) {
    ScriptLimits limits;
    if (options.seconds > 0) {
        limits.mayEndProcess = true;
        limits.time = std::chrono::milliseconds(static_cast<long long>(options.seconds * 1000));
    }
    if (options.mebibytes > 0) {
        limits.bytes = std::size_t{options.mebibytes} << 20;
    }
    return limits;
}

bool readsPinFromInput(const ScriptOptions& options) {
    return options.pin && options.pin->kind == PinSource::Kind::kDescriptor &&
           options.pin->descriptor == kStandardInput;
}

void prepareScript(const ScriptOptions& options, Script& script) {
    // The prompt waits until the script asks.
    if (options.pin && !options.pin->isPrompt()) {
        script.pin = readPin(*options.pin, "");
    }
    script.isLateBound = options.isLateBound;
    const ModuleOptions& module = options.module;
    script.moduleOptions = module;
    // Who names a module or a configuration learns at once that it is wrong.
    if (!module.path.empty() || !module.configuration.empty() || !module.workFolder.empty()) {
        script.module = std::make_shared<LoadedModule>(module);
    }
}

}  // namespace zr::host
