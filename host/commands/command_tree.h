// The tree of the commands.
#pragma once

#include <string>
#include <vector>

#include "host/commands/commands.h"

namespace zr::host {

/// Adds the commands to the parser, each with its name and its help. Only commands that a word names get
/// their options and examples: the parser enters no other, and making all of them would add two thirds to
/// the instructions of a start.
/// @param words  of the command line.
void addCommands(CLI::App& app, Action& action, const std::vector<std::string>& words);

/// Adds all commands with all their options.
void addWholeCommands(CLI::App& app, Action& action);

}  // namespace zr::host
