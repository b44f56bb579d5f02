// What all commands understand, as tables: shell completion and the manual page are written from
// them.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zr::host {

struct SwitchRow {
    std::vector<std::string> names;  ///< "-o", "--output"
    std::string value;               ///< "FILE"; empty for a switch without a value
    std::string help;
};

struct CommandRow {
    std::string path;  ///< "file read"; empty for zrkey itself
    std::string help;
    std::string usage;  ///< "zrkey file read [OPTIONS] NUMBER"
    std::vector<SwitchRow> switches;
    std::vector<std::string> examples;  ///< without "zrkey"
    bool isGroup = false;
};

/// zrkey itself, then its commands; each group is followed by its own commands.
std::vector<CommandRow> commandTable(const CLI::App& app);

/// The last word of a path.
std::string lastWord(const std::string& path);

/// The commands directly in a group.
std::vector<CommandRow> commandsIn(const std::vector<CommandRow>& table, const std::string& group);

/// The switches with a value of all commands, each once.
std::vector<SwitchRow> switchesWithValue(const std::vector<CommandRow>& table);

/// The words that a value is completed with, separated by blanks; empty when nothing is known.
std::string wordsOfValue(const std::string& value);
bool isFileValue(const std::string& value);

/// @return what the hidden option --generate writes; empty for an unknown kind.
/// @param kind  "bash", "zsh", "fish", "man"; "objects": the reference of the object model; "idl": its
///              interfaces for Automation; "page-types": the types of the page library.
std::string generate(const CLI::App& app, const std::string& kind);

/// @return the manifest of zrkey-browser for a browser, for our own extensions; empty for a browser that
///         is not known. --generate writes it too.
std::string generateManifest(const std::string& browser, const std::string& program);

std::string bashCompletion(const std::vector<CommandRow>& table);
std::string zshCompletion(const std::vector<CommandRow>& table);
std::string fishCompletion(const std::vector<CommandRow>& table);
std::string manualPage(const std::vector<CommandRow>& table);

}  // namespace zr::host
