// The command line of zrkey: the commands, their help, and messages about wrong usage.
#include "host/commands/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <system_error>

#include "host/commands/command_tables.h"
#include "host/commands/command_tree.h"
#include "host/commands/usage.h"
#include "host/commands/word_order.h"
#include "host/output/colour.h"
#include "host/output/failure.h"
#include "host/system/interruption.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

int writeHelp(const std::string& text) {
    const std::error_code error = writeAll(kStandardOutput, text);
    if (error) {
        const Failure failure = systemFailure(kExitFailure, "write to standard output", error,
                                              "check free space and permissions");
        writeAll(kStandardError, failure.line());
    }
    return error ? kExitFailure : kExitOk;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& words) {
    CLI::App app("Cryptographic tokens from the command line and from scripts.", "zrkey");
    app.set_version_flag("--version", "zrkey " ZRKEY_VERSION);
    app.failure_message([&words](const CLI::App* failed, const CLI::Error& error) {
        return usageLine(*failed, error, words);
    });
    app.formatter(helpFormatter());
    Action action;
    // For the build, which installs what it writes.
    const bool isGenerated = !words.empty() && words.front() == "--generate";
    if (isGenerated) {
        addWholeCommands(app, action);
    } else {
        addCommands(app, action, words);
    }
    constexpr std::size_t kWordsOfManifest = 3;
    const bool isManifest = words.size() == kWordsOfManifest;
    if (isGenerated && (words.size() == 2 || isManifest)) {
        const std::string text =
            isManifest ? generateManifest(words[1], words[2]) : generate(app, words[1]);
        if (!text.empty()) {
            return writeAll(kStandardOutput, text) ? kExitFailure : kExitOk;
        }
    }
    std::vector<std::string> ordered = inParserOrder(app, words);
    // The parser takes the words from the end.
    std::reverse(ordered.begin(), ordered.end());
    try {
        app.parse(ordered);
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        std::ostringstream errors;
        const int code = app.exit(error, output, errors);
        const std::string line = errors.str();
        writeAll(kStandardError, usesColour(kStandardError) ? withRedName(line) : line);
        return code == 0 ? writeHelp(output.str()) : kExitUsage;
    }
    forgetInterruption();
    try {
        return action();
    } catch (const Interrupted&) {
        return interruptionExitCode();
    }
}

}  // namespace zr::host
