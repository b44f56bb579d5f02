// The tree of the commands: their names, in the order of the help, and what adds their options.
#include "host/commands/command_tree.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "host/commands/command_tables.h"
#include "host/commands/examples.h"

namespace zr::host {
namespace {

void addHelpCommand(CLI::App& command, Action&) {
    // Its words are exchanged before they reach the parser.
    command
        .add_option_function<std::string>(
            "COMMAND", [](const std::string&) {}, "The command, such as: pin change")
        ->type_name("");
}

struct CommandEntry {
    const char* path;
    const char* help;
    void (*add)(CLI::App& command, Action& action);  ///< null: a group, before its commands
};

constexpr CommandEntry kCommands[] = {
    {"run", "Runs a script; the words after FILE are its global array \"arguments\"",
     addRunCommand},
    {"shell", "Runs statements of a script as they are typed", addShellCommand},
    {"list", "Lists the tokens of the module", addListCommand},
    {"info", "Shows the properties of a token", addInfoCommand},
    {"login", "Checks a PIN and does nothing else", addLoginCommand},
    {"pin", "Manages the PINs of a token", nullptr},
    {"pin change", "Changes a PIN of a token", addPinChangeCommand},
    {"pin unblock", "Gives the user a new PIN, as the security officer", addPinUnblockCommand},
    {"file", "Works with the files of a token", nullptr},
    {"file list", "Lists the files of a token", addFileListCommand},
    {"file exists", "Checks whether a file exists", addFileExistsCommand},
    {"file read", "Reads the content of a file", addFileReadCommand},
    {"file create", "Creates an empty file; created as N, it is found as N + 1",
     addFileCreateCommand},
    {"file write", "Writes the content of a file, under the number that finds it",
     addFileWriteCommand},
    {"file delete", "Deletes a file", addFileDeleteCommand},
    {"cert", "Lists and reads the certificates of a token", nullptr},
    {"cert list", "Lists the certificates of a token", addCertListCommand},
    {"cert read", "Reads a certificate", addCertReadCommand},
    {"sign", "Signs data with the key of a certificate", addSignCommand},
    {"verify", "Verifies a signature with the key of a certificate", addVerifyCommand},
    {"digest", "Computes the digest of data", addDigestCommand},
    {"doctor", "Checks what a login needs, without logging in", addDoctorCommand},
    {"watch", "Shows each token that is put in or taken out", addWatchCommand},
    {"trace", "Runs a command and shows its calls of the module on standard error",
     addTraceCommand},
    {"config", "Shows or writes the configuration", nullptr},
    {"config show", "Shows the configuration in use and where it comes from", addConfigShowCommand},
    {"config init", "Writes the built-in configuration into the user's file", addConfigInitCommand},
    {"config path", "Lists the places of the configuration, in their order, and which exist",
     addConfigPathCommand},
    {"browser", "Lets web pages use tokens", nullptr},
    {"browser install", "Makes zrkey-browser known to browsers, or repairs that",
     addBrowserInstallCommand},
    {"browser uninstall", "Makes browsers forget zrkey-browser", addBrowserUninstallCommand},
    {"browser status", "Shows which browsers know zrkey-browser, its settings, and what is wrong",
     addBrowserStatusCommand},
    {"browser allow", "Lets a site use the tokens", addBrowserAllowCommand},
    {"browser deny", "Forbids a site to use the tokens, whatever other lists say",
     addBrowserDenyCommand},
    {"browser forget", "Takes a site off the lists of allowed and of denied sites",
     addBrowserForgetCommand},
    {"browser list", "Lists the allowed and denied sites, or says whether one may use the tokens",
     addBrowserListCommand},
    {"browser module", "Sets or shows the PKCS #11 module that web pages reach",
     addBrowserModuleCommand},
    {"help", "Shows the help of a command", addHelpCommand}};

/// The help of a command ends with its examples.
void addExamples(CLI::App& command, const std::string& path) {
    std::string footer = path.empty() ? "--module, --workdir, --config, --json, -v and -q may "
                                        "also stand before the command.\n\nExamples:"
                                      : "Examples:";
    for (const std::string& example : examplesOf(path)) {
        footer.append("\n  zrkey ").append(example);
    }
    command.footer(footer);
}

/// @param isNamed  called with the name of a command: whether it can be entered.
template <class IsNamed>
void addTree(CLI::App& app, Action& action, IsNamed isNamed) {
    app.require_subcommand(1);
    CLI::App* group = &app;
    for (const CommandEntry& entry : kCommands) {
        const std::string path = entry.path;
        const std::string name = lastWord(path);
        CLI::App* command = (name == path ? app : *group).add_subcommand(name, entry.help);
        if (!entry.add) {
            group = command;
            group->require_subcommand(1);
        }
        if (!isNamed(name)) {
            continue;
        }
        addExamples(*command, path);
        if (entry.add) {
            entry.add(*command, action);
        }
    }
    // Last: a new command would begin with a copy of them.
    addExamples(app, "");
}

}  // namespace

void addCommands(CLI::App& app, Action& action, const std::vector<std::string>& words) {
    addTree(app, action, [&words](const std::string& name) {
        return std::find(words.begin(), words.end(), name) != words.end();
    });
}

void addWholeCommands(CLI::App& app, Action& action) {
    addTree(app, action, [](const std::string&) { return true; });
}

}  // namespace zr::host
