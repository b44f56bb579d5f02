// The help of every command, to the last character, and its reference.
#include <regex>
#include <sstream>

#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class CommandHelpTest : public CommandTest {
protected:
    /// Expects every switch of a command's help in its reference; returns their number.
    static int expectSwitchesIn(const std::string& page, std::vector<std::string> command) {
        const std::string reference = readFile(std::string(ZRKEY_DOCS "/") + page);
        command.emplace_back("--help");
        const std::string help = zrkey(command).output;
        const std::regex pattern("[ ,](--?[a-z][a-z-]*)");
        int switches = 0;
        for (std::sregex_iterator match(help.begin(), help.end(), pattern), end; match != end;
             ++match, ++switches) {
            const std::string name = (*match)[1].str();
            // Followed by its value, or alone.
            EXPECT_TRUE(reference.find('`' + name + '`') != std::string::npos ||
                        reference.find('`' + name + ' ') != std::string::npos)
                << name;
        }
        return switches;
    }
};

/// The words between "$ zrkey " and the end of a line.
std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST_F(CommandHelpTest, EveryHelpPageMatchesTheKeptText) {
    const std::string mark = "$ zrkey ";
    std::string pages = readFile(ZRKEY_HELP);
    int count = 0;
    for (std::size_t begin = 0; begin < pages.size(); ++count) {
        ASSERT_EQ(begin, pages.find(mark, begin));
        const std::size_t lineEnd = pages.find('\n', begin);
        const std::size_t end = std::min(pages.find("\n" + mark, lineEnd), pages.size() - 1) + 1;
        const std::string line = pages.substr(begin + mark.size(), lineEnd - begin - mark.size());
        SCOPED_TRACE(line);
        expectOutput(wordsOf(line), pages.substr(lineEnd + 1, end - lineEnd - 1));
        begin = end;
    }
    // Including five groups and help itself.
    EXPECT_EQ(39, count);
}

TEST_F(CommandHelpTest, EverySwitchOfRunIsInItsReference) {
    EXPECT_GE(expectSwitchesIn("script-reference.md", {"run"}), 4);
    EXPECT_GE(expectSwitchesIn("script-reference.md", {"shell"}), 4);
}

TEST_F(CommandHelpTest, EverySwitchOfTheCommandsIsInTheirReference) {
    const std::vector<std::vector<std::string>> commands = {{"list"},
                                                            {"info"},
                                                            {"login"},
                                                            {"pin", "change"},
                                                            {"file", "exists"},
                                                            {"file", "read"},
                                                            {"file", "create"},
                                                            {"file", "delete"},
                                                            {"file", "list"},
                                                            {"file", "write"},
                                                            {"pin", "unblock"},
                                                            {"cert", "list"},
                                                            {"cert", "read"},
                                                            {"sign"},
                                                            {"verify"},
                                                            {"digest"},
                                                            {"doctor"},
                                                            {"watch"},
                                                            {"config", "show"},
                                                            {"config", "path"},
                                                            {"browser", "install"},
                                                            {"browser", "uninstall"},
                                                            {"browser", "status"},
                                                            {"browser", "allow"},
                                                            {"browser", "deny"},
                                                            {"browser", "forget"},
                                                            {"browser", "list"},
                                                            {"browser", "module"}};
    for (const std::vector<std::string>& command : commands) {
        EXPECT_GE(expectSwitchesIn("command-reference.md", command), 6) << command.back();
    }
}

}  // namespace
}  // namespace zr::test
