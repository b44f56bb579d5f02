// The commands of zrkey: each adds itself to the command line, in a file of its own.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace zr::host {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

/// What the parsed command line asks for; returns the exit code.
using Action = std::function<int()>;

/// zrkey run FILE.js [ARG...]
/// @param app     the command line to add to; outlives the action.
/// @param action  set when the command has been chosen.
void addRunCommand(CLI::App& app, Action& action);

}  // namespace zr::host
