// What the host says to the people who run it.
#pragma once

#include <string>

namespace zr::host {

/// Writes a line to standard error, which browsers pass to their own. A line that nobody reads is left
/// out after a short time.
void complain(const std::string& line);

}  // namespace zr::host
