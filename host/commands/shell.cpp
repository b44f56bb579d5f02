// zrkey shell: runs statements of a script as they are typed.
#include <CLI/CLI.hpp>

#include <memory>
#include <utility>

#include "host/commands/commands.h"
#include "host/commands/script_options.h"
#include "host/output/console.h"
#include "host/output/failure.h"
#include "host/script/engine.h"
#include "host/system/line_editor.h"

namespace zr::host {
namespace {

int runShell(const ScriptOptions& options) {
    const std::unique_ptr<LineEditor> editor = LineEditor::make();
    Console console(options.verbose ? Diagnostics::kOnStandardError : Diagnostics::kDropped);
    Script script = {"shell", {}, {}, ScriptOrigin::kCommandLine};
    try {
        prepareScript(options, script);
    } catch (const Failure& failure) {
        console.writeError(failure.line());
        return failure.exitCode;
    }
    return ScriptEngine(console, limitsOf(options)).converse(std::move(script), editor.get());
}

}  // namespace

void addShellCommand(CLI::App& command, Action& action) {
    const auto options = std::make_shared<ScriptOptions>();
    addScriptOptions(command, *options, "a statement");
    command.callback([options, &action] {
        checkScriptOptions(*options);
        action = [options] { return runShell(*options); };
    });
}

}  // namespace zr::host
