// The command line of zrkey: the commands, their help, and messages about wrong usage.
#include "host/commands/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <sstream>

#include "host/commands/commands.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

/// Describes the words that no command expects. Only names of options are repeated: any other word
/// may be a PIN.
std::string describeExtras(const std::vector<std::string>& words) {
    std::string names;
    for (const std::string& word : words) {
        if (word.starts_with("--")) {
            names += " " + word.substr(0, word.find('='));
        }
    }
    return names.empty() ? "unexpected argument" : "unknown options:" + names;
}

/// One line that says what is wrong and what to try.
std::string usageLine(const CLI::App* app, const CLI::Error& error) {
    std::string what = error.what();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
        what = describeExtras(app->remaining(true));
    } else if (app->get_subcommands().empty() && !app->remaining().empty()) {
        what = "unknown command";
    }
    return "zrkey: " + printable(what) + "; zrkey --help shows the usage\n";
}

/// Leaves out the lists of excluded options: the parser sorts them by address, which varies.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        return text.substr(0, text.find(" Excludes:"));
    }
};

CLI::App& addGroup(CLI::App& app, const std::string& name, const std::string& help) {
    CLI::App* group = app.add_subcommand(name, help);
    group->require_subcommand(1);
    return *group;
}

void addCommands(CLI::App& app, Action& action) {
    app.require_subcommand(1);
    addRunCommand(app, action);
    addListCommand(app, action);
    addInfoCommand(app, action);
    addLoginCommand(app, action);
    addPinChangeCommand(addGroup(app, "pin", "Manages the PINs of a token"), action);
    CLI::App& file = addGroup(app, "file", "Works with the files of a token");
    addFileExistsCommand(file, action);
    addFileReadCommand(file, action);
    addFileCreateCommand(file, action);
    addFileDeleteCommand(file, action);
    CLI::App& cert = addGroup(app, "cert", "Lists and reads the certificates of a token");
    addCertListCommand(cert, action);
    addCertReadCommand(cert, action);
    addSignCommand(app, action);
    addVerifyCommand(app, action);
    addDigestCommand(app, action);
}

}  // namespace

int runCommandLine(std::vector<std::string> words) {
    CLI::App app("Cryptographic tokens from the command line and from scripts.", "zrkey");
    app.set_version_flag("--version", "zrkey " ZRKEY_VERSION);
    app.failure_message(usageLine);
    app.formatter(std::make_shared<HelpFormatter>());
    Action action;
    addCommands(app, action);

    // The parser takes the words from the end.
    std::reverse(words.begin(), words.end());
    try {
        app.parse(words);
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        std::ostringstream errors;
        const int code = app.exit(error, output, errors);
        writeAll(kStandardOutput, output.str());
        writeAll(kStandardError, errors.str());
        return code == 0 ? kExitOk : kExitUsage;
    }
    return action();
}

}  // namespace zr::host
