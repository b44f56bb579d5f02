// What the help pages say of each command: for tests of all commands, those that are added later too.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/host/child_command.h"

namespace zr::test {

using Words = std::vector<std::string>;

struct PageRow {
    Words names;        ///< "-o", "--output"; "NUMBER" for a word without a name
    std::string value;  ///< "FILE"; empty for a switch without a value
    bool isRequired = false;

    bool isSwitch() const { return names.front().starts_with('-'); }
};

struct CommandPage {
    Words path;  ///< "file", "read"
    std::vector<PageRow> rows;
    bool isGroup = false;

    std::string name() const;
    bool has(const std::string& name) const;
};

/// The pages of all commands and groups, without the one of zrkey itself.
/// @param zrkey  runs it.
std::vector<CommandPage> commandPages(const std::function<CommandResult(const Words&)>& zrkey);

/// The shortest words with which a command can run, and a PIN. The file "data.bin" is there, a script
/// "script.js" for zrkey run, and the token has a file that is found as 7.
/// @param options  added; the first may replace a switch that is needed.
Words usualWords(const CommandPage& page, const Words& options = {});

/// Words one after the other.
Words joined(Words first, const Words& second);

}  // namespace zr::test
