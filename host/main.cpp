// The zrkey command: reads the command line and runs the command it names.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

#include "commands.h"
#include "failure.h"
#include "system.h"

namespace {

/// What nothing was expected for. Names of options alone: another word may be a PIN.
std::string describeExtras(const std::vector<std::string>& words) {
    std::string names;
    for (const std::string& word : words) {
        if (word.starts_with("--")) {
            names += " " + word.substr(0, word.find('='));
        }
    }
    return names.empty() ? "an argument is not expected" : "not expected:" + names;
}

/// One line: what is wrong, and what to try.
std::string usageLine(const CLI::App* app, const CLI::Error& error) {
    std::string what = error.what();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
        what = describeExtras(app->remaining(true));
    } else if (app->get_subcommands().empty() && !app->remaining().empty()) {
        what = "there is no such command";
    }
    return "zrkey: " + zr::host::printable(what) + "; zrkey --help shows the usage\n";
}

CLI::App& addGroup(CLI::App& app, const std::string& name, const std::string& help) {
    CLI::App* group = app.add_subcommand(name, help);
    group->require_subcommand(1);
    return *group;
}

void addCommands(CLI::App& app, zr::host::Action& action) {
    using namespace zr::host;
    app.require_subcommand(1);
    addRunCommand(app, action);
    addListCommand(app, action);
    addInfoCommand(app, action);
    addLoginCommand(app, action);
    addPinChangeCommand(addGroup(app, "pin", "Changes PINs"), action);
    CLI::App& file = addGroup(app, "file", "Works on the files of a token");
    addFileExistsCommand(file, action);
    addFileReadCommand(file, action);
    addFileCreateCommand(file, action);
    addFileDeleteCommand(file, action);
    CLI::App& cert = addGroup(app, "cert", "Shows the certificates of a token");
    addCertListCommand(cert, action);
    addCertReadCommand(cert, action);
    addSignCommand(app, action);
    addVerifyCommand(app, action);
    addDigestCommand(app, action);
}

int run(int argc, char** argv) {
    CLI::App app("Cryptographic tokens from the command line and from scripts.", "zrkey");
    app.set_version_flag("--version", "zrkey " ZRKEY_VERSION);
    app.failure_message(usageLine);
    zr::host::Action action;
    addCommands(app, action);

    std::vector<std::string> arguments = zr::host::commandLineArguments(argc, argv);
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        std::ostringstream errors;
        const int code = app.exit(error, output, errors);
        zr::host::writeAll(zr::host::kStandardOutput, output.str());
        zr::host::writeAll(zr::host::kStandardError, errors.str());
        return code == 0 ? zr::host::kExitOk : zr::host::kExitUsage;
    }
    return action();
}

}  // namespace

int main(int argc, char** argv) {
    zr::host::holdStandardStreams();
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        zr::host::writeAll(zr::host::kStandardError, std::string("zrkey: ") + error.what() + "\n");
        return zr::host::kExitFailure;
    }
}
