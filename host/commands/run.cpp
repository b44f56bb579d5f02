// zrkey run: runs a script file with the library's objects at hand.
#include <CLI/CLI.hpp>

#include <chrono>
#include <cmath>
#include <memory>
#include <optional>

#include "byte_io.h"
#include "commands.h"
#include "console.h"
#include "failure.h"
#include "script_engine.h"

namespace zr::host {
namespace {

struct RunOptions {
    bool verbose = false;
    double seconds = 0;
    unsigned int mebibytes = 0;
    std::string file;
    std::vector<std::string> arguments;
};

/// Names the words that the parser leaves alone.
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
    const std::optional<std::string> source = readBytes(options.file);
    if (!source) {
        console.writeError(printable("zrkey: cannot read " + options.file) + "\n");
        return kExitFailure;
    }
    ScriptEngine engine(console, limitsOf(options));
    return engine.run(options.file, *source, options.arguments) ? kExitOk : kExitFailure;
}

}  // namespace

void addRunCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* command = app.add_subcommand(
        "run", "Runs a script; what follows FILE is its global array \"arguments\"");
    command->add_flag("-v,--verbose", options->verbose,
                      "Shows the library's diagnostics on standard error");
    command->add_option("--time-limit", options->seconds, "Ends the script after so many seconds")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 1e6).description(""));
    command
        ->add_option("--memory-limit", options->mebibytes,
                     "Gives the script at most so many MiB of memory")
        ->type_name("MIB")
        ->check(CLI::Range(1, 1 << 20).description(""));
    // FILE and what follows it are kept as written, also what looks like an option or a list.
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
            // Neither below nor above the range.
            throw CLI::ValidationError("--time-limit", "a number is needed");
        }
        options->file = words.front();
        options->arguments.assign(words.begin() + 1, words.end());
        action = [options] { return runScriptFile(*options); };
    });
}

}  // namespace zr::host
