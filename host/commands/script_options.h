// The options of the commands that run scripts: run and shell.
#pragma once

#include <optional>

#include "host/commands/commands.h"
#include "host/script/engine.h"
#include "host/token/token_options.h"

namespace zr::host {

struct ScriptOptions {
    bool verbose = false;
    bool isLateBound = false;
    double seconds = 0;
    unsigned int mebibytes = 0;
    std::optional<PinSource> pin;
    ModuleOptions module;
};

/// --module, --config, --workdir, --pin, --time-limit, --memory-limit, --late-bound and -v.
/// @param timed  what ends after --time-limit.
void addScriptOptions(CLI::App& command, ScriptOptions& options, const char* timed);
/// What the option table cannot check. Throws the parser's error.
void checkScriptOptions(const ScriptOptions& options);

ScriptLimits limitsOf(const ScriptOptions& options);

/// Whether the PIN comes from standard input.
bool readsPinFromInput(const ScriptOptions& options);

/// Gives the script its PIN, and the module that the options name. Throws a Failure.
void prepareScript(const ScriptOptions& options, Script& script);

}  // namespace zr::host
