// The examples at the end of each help page.
#pragma once

#include <string>
#include <vector>

namespace zr::host {

/// Two command lines without "zrkey".
/// @param command  a command ("file read"), a group or, for "", zrkey itself.
/// @return nothing for other names.
std::vector<std::string> examplesOf(const std::string& command);

}  // namespace zr::host
