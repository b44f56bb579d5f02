// The words of the command line in the order that the parser expects.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zr::host {

/// The options that may also stand before the command.
struct GlobalOption {
    const char* name;
    bool hasValue;
};
inline constexpr GlobalOption kGlobalOptions[] = {
    {"--json", false},  {"-v", false},      {"--verbose", false}, {"-q", false},
    {"--quiet", false}, {"--module", true}, {"--workdir", true},  {"--config", true}};

/// Moves global options from before the command to after it, and makes "help COMMAND" the command
/// with --help. Wrong words stay wrong: the parser finds them.
std::vector<std::string> inParserOrder(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace zr::host
