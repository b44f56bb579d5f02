// Colours on terminals.
#pragma once

#include <string>
#include <string_view>

namespace zr::host {

/// Whether text for a descriptor may be coloured: it is a capable terminal, and the variable NO_COLOR
/// is not set.
bool usesColour(int descriptor);

/// Text between the escape sequences of the colour red. The text must be safe to show.
std::string inRed(std::string_view text);

/// The same for "zrkey:" at the start of a line; other lines stay as they are.
std::string withRedName(const std::string& line);

}  // namespace zr::host
