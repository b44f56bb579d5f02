// Help pages and the line about wrong usage.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Error;
class FormatterBase;
}  // namespace CLI

namespace zr::host {

/// Writes the help pages.
std::shared_ptr<CLI::FormatterBase> helpFormatter();

/// The command with the groups before it: "zrkey file read".
std::string fullName(const CLI::App& command);

/// Its line of usage: "zrkey file read [OPTIONS] NUMBER".
std::string usageOf(const CLI::App& command);

/// The names that a mistyped one is closest to; none when it resembles no name.
std::vector<std::string> similarNames(const std::string& mistyped,
                                      const std::vector<std::string>& names);

/// One line: what is wrong, the usage of the command, and how to see more.
/// @param words  as the user gave them.
std::string usageLine(const CLI::App& app, const CLI::Error& error,
                      const std::vector<std::string>& words);

}  // namespace zr::host
