// The command line of zrkey.
#pragma once

#include <string>
#include <vector>

namespace zr::host {

/// Runs the command that the words name, or shows help or what is wrong with the words.
/// @param words  without the name of the program.
/// @return the exit code.
int runCommandLine(const std::vector<std::string>& words);

}  // namespace zr::host
