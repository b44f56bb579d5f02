// The command line of zrkey.
#pragma once

#include <string>
#include <vector>

namespace zr::host {

/// Runs the command that the words name; help and wrong usage are shown.
/// @param words  without the name of the program.
/// @return the exit code.
int runCommandLine(std::vector<std::string> words);

}  // namespace zr::host
