// Colours on terminals.
#include "host/output/colour.h"

#include "host/system/system.h"
#include "host/system/terminal.h"

namespace zr::host {

bool usesColour(int descriptor) {
    return environmentVariable("NO_COLOR").value_or("").empty() && isCapableTerminal(descriptor);
}

std::string inRed(std::string_view text) {
    return std::string("\x1b[31m").append(text).append("\x1b[0m");
}

std::string withRedName(const std::string& line) {
    constexpr std::string_view kName = "zrkey:";
    return line.starts_with(kName) ? inRed(kName).append(line, kName.size()) : line;
}

}  // namespace zr::host
