// zrkey run: runs a script file that uses the library's objects.
#include <CLI/CLI.hpp>

#include <chrono>
#include <cmath>
#include <memory>
#include <system_error>

#include "host/commands/commands.h"
#include "host/output/console.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/script/engine.h"
#include "host/system/byte_io.h"

namespace zr::host {
namespace {

struct RunOptions {
    bool verbose = false;
    double seconds = 0;
    unsigned int mebibytes = 0;
    std::string file;
    std::vector<std::string> arguments;
};

/// Shows the words that the parser does not read.
class RunFormatter : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " [OPTIONS] FILE [ARG...]\n";
    }
};

ScriptLimits limitsOf(const RunOptions& options) {
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

int runScriptFile(const RunOptions& options) {
    Console console(options.verbose ? Diagnostics::kOnStandardError : Diagnostics::kDropped);
    std::error_code error;
    const ErasedBytes source = readBytes(options.file, error);
    if (error) {
        console.writeError(
            printable("zrkey: cannot read " + options.file + ": " + error.message()) + "\n");
        return kExitFailure;
    }
    ScriptEngine engine(console, limitsOf(options));
    return engine.run(options.file, viewOf(source), options.arguments) ? kExitOk : kExitFailure;
}

}  // namespace

void addRunCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* command = app.add_subcommand(
        "run", "Runs a script; the words after FILE are its global array \"arguments\"");
    command->add_flag("-v,--verbose", options->verbose,
                      "Shows the library's diagnostics on standard error");
    command->add_option("--time-limit", options->seconds, "Ends the script after this many seconds")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 1e6).description(""));
    command
        ->add_option("--memory-limit", options->mebibytes,
                     "Gives the script at most this many MiB of memory")
        ->type_name("MIB")
        ->check(CLI::Range(1, 1 << 20).description(""));
    // FILE and the words after it are passed on unchanged, also those that look like options.
    command->prefix_command();
    command->formatter(std::make_shared<RunFormatter>());
    command->callback([command, options, &action] {
        std::vector<std::string> words = command->remaining();
        if (words.empty()) {
            throw CLI::RequiredError("FILE");
        }
        if (words.front().starts_with('-')) {
            throw CLI::ExtrasError({words.front()});
        }
        if (std::isnan(options->seconds)) {
            // The range check accepts it.
            throw CLI::ValidationError("--time-limit", "a number is required");
        }
        options->file = words.front();
        options->arguments.assign(words.begin() + 1, words.end());
        action = [options] { return runScriptFile(*options); };
    });
}

}  // namespace zr::host
