// The tree of the commands.
#pragma once

#include <string>
#include <vector>

#include "host/commands/commands.h"

namespace zr::host {

/// Adds the commands to the parser, each with its name and its help. Options and examples, whose
/// making takes longer than all else of a start, get only commands that a word names: the parser enters
/// no other.
/// @param words  of the command line.
void addCommands(CLI::App& app, Action& action, const std::vector<std::string>& words);

/// Adds all commands as a whole.
void addWholeCommands(CLI::App& app, Action& action);

}  // namespace zr::host
