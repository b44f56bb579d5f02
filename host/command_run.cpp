// zrkey run: runs a script file with the library's objects at hand.
#include <CLI/CLI.hpp>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>

#include "commands.h"
#include "console.h"
#include "script_engine.h"

namespace zrhost {
namespace {

struct RunOptions {
    bool verbose = false;
    std::vector<std::string> words;
};

std::optional<std::string> readFile(const std::string& path) {
    std::ifstream stream(std::filesystem::path(std::u8string(path.begin(), path.end())),
                         std::ios::binary);
    std::string content;
    char block[65536];
    while (stream.read(block, sizeof block) || stream.gcount() > 0) {
        content.append(block, static_cast<std::size_t>(stream.gcount()));
    }
    if (!stream.eof() || stream.bad()) {
        return std::nullopt;
    }
    return content;
}

int runScriptFile(const RunOptions& options) {
    const std::string& file = options.words.front();
    Console console(options.verbose ? Diagnostics::kOnStandardError : Diagnostics::kDropped);
    const std::optional<std::string> source = readFile(file);
    if (!source) {
        console.writeError("zrkey: cannot read " + file + "\n");
        return kExitFailure;
    }
    ScriptEngine engine(console);
    const std::vector<std::string> arguments(options.words.begin() + 1, options.words.end());
    return engine.run(file, *source, arguments) ? kExitOk : kExitFailure;
}

}  // namespace

void addRunCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* command = app.add_subcommand(
        "run",
        "Runs a script: zrkey run [-v] FILE.js [ARG...]\n"
        "Everything after FILE.js is the script's, in its global array 'arguments'.");
    command->add_flag("-v,--verbose", options->verbose,
                      "Shows the library's diagnostics on standard error");
    // The first word that is no option of ours, and all that follow, are left as they are.
    command->prefix_command();
    command->callback([command, options, &action] {
        options->words = command->remaining();
        if (options->words.empty()) {
            throw CLI::RequiredError("FILE.js");
        }
        if (options->words.front().size() > 1 && options->words.front().front() == '-') {
            throw CLI::ExtrasError({options->words.front()});
        }
        action = [options] { return runScriptFile(*options); };
    });
}

}  // namespace zrhost
