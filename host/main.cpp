// The zrkey command: reads the command line and runs the command it names.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

#include "commands.h"
#include "system.h"

namespace {

int run(int argc, char** argv) {
    CLI::App app("Cryptographic tokens from the command line and from scripts.", "zrkey");
    app.set_version_flag("--version", "zrkey " ZRKEY_VERSION);
    app.require_subcommand(1);
    zr::host::Action action;
    zr::host::addRunCommand(app, action);

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
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        zr::host::writeAll(zr::host::kStandardError, std::string("zrkey: ") + error.what() + "\n");
        return zr::host::kExitFailure;
    }
}
