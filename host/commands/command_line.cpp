// The command line of zrkey: the commands, their help, and messages about wrong usage.
#include "host/commands/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <system_error>

#include "host/commands/command_tables.h"
#include "host/commands/commands.h"
#include "host/commands/examples.h"
#include "host/commands/usage.h"
#include "host/commands/word_order.h"
#include "host/output/colour.h"
#include "host/output/failure.h"
#include "host/system/interruption.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

CLI::App& addGroup(CLI::App& app, const std::string& name, const std::string& help) {
    CLI::App* group = app.add_subcommand(name, help);
    group->require_subcommand(1);
    return *group;
}

void addCommands(CLI::App& app, Action& action) {
    app.require_subcommand(1);
    addRunCommand(app, action);
    addShellCommand(app, action);
    addListCommand(app, action);
    addInfoCommand(app, action);
    addLoginCommand(app, action);
    CLI::App& pin = addGroup(app, "pin", "Manages the PINs of a token");
    addPinChangeCommand(pin, action);
    addPinUnblockCommand(pin, action);
    CLI::App& file = addGroup(app, "file", "Works with the files of a token");
    addFileListCommand(file, action);
    addFileExistsCommand(file, action);
    addFileReadCommand(file, action);
    addFileCreateCommand(file, action);
    addFileWriteCommand(file, action);
    addFileDeleteCommand(file, action);
    CLI::App& cert = addGroup(app, "cert", "Lists and reads the certificates of a token");
    addCertListCommand(cert, action);
    addCertReadCommand(cert, action);
    addSignCommand(app, action);
    addVerifyCommand(app, action);
    addDigestCommand(app, action);
    addDoctorCommand(app, action);
    addWatchCommand(app, action);
    addTraceCommand(app, action);
    CLI::App& config = addGroup(app, "config", "Shows or writes the configuration");
    addConfigShowCommand(config, action);
    addConfigInitCommand(config, action);
    addConfigPathCommand(config, action);
    CLI::App& browser = addGroup(app, "browser", "Lets web pages use tokens");
    addBrowserInstallCommand(browser, action);
    addBrowserUninstallCommand(browser, action);
    addBrowserStatusCommand(browser, action);
    addBrowserAllowCommand(browser, action);
    addBrowserDenyCommand(browser, action);
    addBrowserForgetCommand(browser, action);
    addBrowserListCommand(browser, action);
    addBrowserModuleCommand(browser, action);
    // Its words are exchanged before they reach the parser.
    app.add_subcommand("help", "Shows the help of a command")
        ->add_option_function<std::string>(
            "COMMAND", [](const std::string&) {}, "The command, such as: pin change")
        ->type_name("");
}

/// Adds the examples to the help of a command and of those in it.
void addExamples(CLI::App& command, const std::string& name) {
    std::string footer = name.empty() ? "--module, --workdir, --config, --json, -v and -q may "
                                        "also stand before the command.\n\nExamples:"
                                      : "Examples:";
    for (const std::string& example : examplesOf(name)) {
        footer.append("\n  zrkey ").append(example);
    }
    command.footer(footer);
    for (CLI::App* inner : command.get_subcommands([](const CLI::App*) { return true; })) {
        addExamples(*inner, name.empty() ? inner->get_name() : name + ' ' + inner->get_name());
    }
}

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
    addCommands(app, action);
    addExamples(app, "");

    // For the build, which installs what it writes.
    constexpr std::size_t kWordsOfManifest = 3;
    const bool isManifest = words.size() == kWordsOfManifest;
    if ((words.size() == 2 || isManifest) && words.front() == "--generate") {
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
