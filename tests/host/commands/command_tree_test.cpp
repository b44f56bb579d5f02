// The tree of the commands: which of them get their options.
#include "host/commands/command_tree.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

#include "host/commands/usage.h"

namespace zr::test {
namespace {

using Words = std::vector<std::string>;

/// The commands in a group, and in the groups in it.
std::vector<const CLI::App*> commandsIn(const CLI::App& group) {
    std::vector<const CLI::App*> all;
    for (const CLI::App* command : group.get_subcommands([](const CLI::App*) { return true; })) {
        all.push_back(command);
        const std::vector<const CLI::App*> inner = commandsIn(*command);
        all.insert(all.end(), inner.begin(), inner.end());
    }
    return all;
}

std::string pathOf(const CLI::App& command) {
    const CLI::App* parent = command.get_parent();
    return parent->get_parent() ? pathOf(*parent) + ' ' + command.get_name() : command.get_name();
}

class CommandTreeTest : public testing::Test {
protected:
    CommandTreeTest() {
        m_whole.formatter(host::helpFormatter());
        host::addWholeCommands(m_whole, m_action);
    }

    /// All paths, in order.
    Words paths() const {
        Words all;
        for (const CLI::App* command : commandsIn(m_whole)) {
            all.push_back(pathOf(*command));
        }
        return all;
    }
    /// The commands with more options than --help.
    Words withOptions(const Words& words) {
        CLI::App app;
        host::addCommands(app, m_action, words);
        Words found;
        for (const CLI::App* command : commandsIn(app)) {
            if (command->get_options().size() > 1) {
                found.push_back(pathOf(*command));
            }
        }
        return found;
    }
    /// The help of a command in a tree for these words.
    std::string helpFor(const Words& words, const std::string& path) {
        CLI::App app;
        // The parser's own names the options that exclude another in the order of their addresses.
        app.formatter(host::helpFormatter());
        host::addCommands(app, m_action, words);
        return helpIn(app, path);
    }
    std::string wholeHelp(const std::string& path) const { return helpIn(m_whole, path); }

private:
    static std::string helpIn(const CLI::App& app, const std::string& path) {
        for (const CLI::App* command : commandsIn(app)) {
            if (pathOf(*command) == path) {
                return command->help();
            }
        }
        return path + " is missing";
    }

    host::Action m_action;
    CLI::App m_whole;
};

TEST_F(CommandTreeTest, OnlyNamedCommandsGetOptions) {
    EXPECT_EQ(Words{}, withOptions({}));
    EXPECT_EQ(Words{}, withOptions({"--help"}));
    EXPECT_EQ(Words{"sign"}, withOptions({"--json", "sign", "-i", "letter.txt"}));
    // One name in several groups.
    EXPECT_EQ((Words{"list", "file list", "cert list", "browser list"}),
              withOptions({"file", "list"}));
}

TEST_F(CommandTreeTest, NamedCommandIsThatOfTheWholeTree) {
    EXPECT_EQ(38u, paths().size());
    for (const std::string& path : paths()) {
        SCOPED_TRACE(path);
        Words words;
        std::istringstream stream(path);
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        EXPECT_EQ(wholeHelp(path), helpFor(words, path));
    }
}

TEST_F(CommandTreeTest, EveryCommandHasItsNameAndHelpInTheHelp) {
    CLI::App app;
    CLI::App whole;
    host::Action action;
    host::addCommands(app, action, {"--help"});
    host::addWholeCommands(whole, action);
    EXPECT_EQ(whole.help(), app.help());
    EXPECT_NE(std::string::npos, app.help().find("browser"));
}

}  // namespace
}  // namespace zr::test
