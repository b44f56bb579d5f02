// zrkey run: runs a script that uses the library's objects.
#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "host/commands/command_frame.h"
#include "host/commands/commands.h"
#include "host/commands/script_options.h"
#include "host/output/console.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/script/engine.h"
#include "host/system/byte_io.h"

namespace zr::host {
namespace {

struct RunOptions {
    ScriptOptions script;
    std::optional<std::string> code;
    std::string file;
    std::vector<std::string> arguments;
};

/// Shows the words that the parser does not read.
class RunFormatter : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " [OPTIONS] FILE [ARG...]\n       " + name +
               " [OPTIONS] -e CODE [ARG...]\n";
    }
};

/// The script, and its bytes if they are read: the script refers to them.
/// @param error  says why they cannot be read.
Script makeScript(const RunOptions& options, ErasedBytes& bytes, std::error_code& error) {
    if (options.code) {
        return {"command line", *options.code, options.arguments, ScriptOrigin::kCommandLine};
    }
    bytes = readBytes(options.file, error);
    if (options.file == kStandardStream) {
        return {"standard input", viewOf(bytes), options.arguments, ScriptOrigin::kStandardInput};
    }
    return {options.file, viewOf(bytes), options.arguments};
}

int runScript(const RunOptions& options) {
    Console console(options.script.verbose ? Diagnostics::kOnStandardError : Diagnostics::kDropped);
    std::error_code error;
    ErasedBytes bytes;
    Script script = makeScript(options, bytes, error);
    if (error) {
        const std::string name =
            script.origin == ScriptOrigin::kStandardInput ? script.name : inQuotes(script.name);
        console.writeFailure(
            systemFailure(kExitFailure, "read " + name, error, "check the path and its permissions")
                .line());
        return kExitFailure;
    }
    try {
        prepareScript(options.script, script);
    } catch (const Failure& failure) {
        console.writeFailure(failure.line());
        return failure.exitCode;
    }
    return ScriptEngine(console, limitsOf(options.script)).run(std::move(script));
}

/// Takes the words that are no options: FILE, unless -e gives the script, and the arguments.
void takeWords(std::vector<std::string> words, RunOptions& options) {
    if (words.empty() && !options.code) {
        throw CLI::RequiredError("FILE");
    }
    if (!words.empty() && words.front().starts_with('-') && words.front() != kStandardStream) {
        throw CLI::ExtrasError({words.front()});
    }
    if (!options.code) {
        options.file = words.front();
        words.erase(words.begin());
    }
    options.arguments = std::move(words);
}

}  // namespace

void addRunCommand(CLI::App& command, Action& action) {
    const auto options = std::make_shared<RunOptions>();
    addScriptOptions(command, options->script, "the script");
    command.add_option("-e,--eval", options->code, "Runs this script instead of a file")
        ->type_name("CODE");
    // FILE and the words after it are passed on unchanged, also those that look like options.
    command.prefix_command();
    command.formatter(std::make_shared<RunFormatter>());
    command.callback([&command, options, &action] {
        takeWords(command.remaining(), *options);
        checkScriptOptions(options->script);
        if (options->file == kStandardStream && readsPinFromInput(options->script)) {
            throw CLI::ValidationError("--pin", "standard input contains the script");
        }
        action = [options] { return runScript(*options); };
    });
}

}  // namespace zr::host
