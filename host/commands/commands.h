// The commands of zrkey: the options of each and what it does, in a file of its own.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace zr::host {

/// Runs the chosen command; returns the exit code.
using Action = std::function<int()>;

/// Each function adds the options of one command.
/// @param command  without options; outlives the action.
/// @param action   set when the command is chosen.
void addRunCommand(CLI::App& command, Action& action);
void addShellCommand(CLI::App& command, Action& action);
void addListCommand(CLI::App& command, Action& action);
void addInfoCommand(CLI::App& command, Action& action);
void addLoginCommand(CLI::App& command, Action& action);
void addPinChangeCommand(CLI::App& command, Action& action);
void addPinUnblockCommand(CLI::App& command, Action& action);
void addFileListCommand(CLI::App& command, Action& action);
void addFileExistsCommand(CLI::App& command, Action& action);
void addFileReadCommand(CLI::App& command, Action& action);
void addFileCreateCommand(CLI::App& command, Action& action);
void addFileWriteCommand(CLI::App& command, Action& action);
void addFileDeleteCommand(CLI::App& command, Action& action);
void addCertListCommand(CLI::App& command, Action& action);
void addCertReadCommand(CLI::App& command, Action& action);
void addSignCommand(CLI::App& command, Action& action);
void addVerifyCommand(CLI::App& command, Action& action);
void addDigestCommand(CLI::App& command, Action& action);
void addWatchCommand(CLI::App& command, Action& action);
void addDoctorCommand(CLI::App& command, Action& action);
void addTraceCommand(CLI::App& command, Action& action);
void addConfigShowCommand(CLI::App& command, Action& action);
void addConfigInitCommand(CLI::App& command, Action& action);
void addConfigPathCommand(CLI::App& command, Action& action);
void addBrowserInstallCommand(CLI::App& command, Action& action);
void addBrowserUninstallCommand(CLI::App& command, Action& action);
void addBrowserStatusCommand(CLI::App& command, Action& action);
void addBrowserAllowCommand(CLI::App& command, Action& action);
void addBrowserDenyCommand(CLI::App& command, Action& action);
void addBrowserForgetCommand(CLI::App& command, Action& action);
void addBrowserListCommand(CLI::App& command, Action& action);
void addBrowserModuleCommand(CLI::App& command, Action& action);

}  // namespace zr::host
