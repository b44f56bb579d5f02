// The commands of zrkey: each adds itself to the command line, in a file of its own.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace zr::host {

/// Runs the chosen command; returns the exit code.
using Action = std::function<int()>;

/// Each function adds one command.
/// @param parent  the command line, or the group that the command belongs to; outlives the action.
/// @param action  set when the command is chosen.
void addRunCommand(CLI::App& parent, Action& action);
void addShellCommand(CLI::App& parent, Action& action);
void addListCommand(CLI::App& parent, Action& action);
void addInfoCommand(CLI::App& parent, Action& action);
void addLoginCommand(CLI::App& parent, Action& action);
void addPinChangeCommand(CLI::App& parent, Action& action);
void addPinUnblockCommand(CLI::App& parent, Action& action);
void addFileListCommand(CLI::App& parent, Action& action);
void addFileExistsCommand(CLI::App& parent, Action& action);
void addFileReadCommand(CLI::App& parent, Action& action);
void addFileCreateCommand(CLI::App& parent, Action& action);
void addFileWriteCommand(CLI::App& parent, Action& action);
void addFileDeleteCommand(CLI::App& parent, Action& action);
void addCertListCommand(CLI::App& parent, Action& action);
void addCertReadCommand(CLI::App& parent, Action& action);
void addSignCommand(CLI::App& parent, Action& action);
void addVerifyCommand(CLI::App& parent, Action& action);
void addDigestCommand(CLI::App& parent, Action& action);
void addWatchCommand(CLI::App& parent, Action& action);
void addDoctorCommand(CLI::App& parent, Action& action);
void addTraceCommand(CLI::App& parent, Action& action);
void addConfigShowCommand(CLI::App& parent, Action& action);
void addConfigInitCommand(CLI::App& parent, Action& action);
void addConfigPathCommand(CLI::App& parent, Action& action);
void addBrowserInstallCommand(CLI::App& parent, Action& action);
void addBrowserUninstallCommand(CLI::App& parent, Action& action);
void addBrowserStatusCommand(CLI::App& parent, Action& action);
void addBrowserAllowCommand(CLI::App& parent, Action& action);
void addBrowserDenyCommand(CLI::App& parent, Action& action);
void addBrowserForgetCommand(CLI::App& parent, Action& action);
void addBrowserListCommand(CLI::App& parent, Action& action);
void addBrowserModuleCommand(CLI::App& parent, Action& action);

}  // namespace zr::host
