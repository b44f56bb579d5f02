// The command line of zrkey: help, version and wrong usage.
#include "child_command.h"

#include <regex>

namespace zr::test {
namespace {

class CommandLineTest : public ChildCommandTest {
protected:
    /// Looks for every switch of a command's help in its reference; returns how many there are.
    static int expectSwitchesIn(const std::string& page, std::vector<std::string> command) {
        const std::string reference = readFile(std::string(ZRKEY_DOCS "/") + page);
        command.push_back("--help");
        const std::string help = zrkey(command).output;
        const std::regex pattern("[ ,](--?[a-z][a-z-]*)");
        int switches = 0;
        for (std::sregex_iterator match(help.begin(), help.end(), pattern), end; match != end;
             ++match, ++switches) {
            const std::string name = (*match)[1].str();
            // With its value behind it, or alone.
            EXPECT_TRUE(reference.find('`' + name + '`') != std::string::npos ||
                        reference.find('`' + name + ' ') != std::string::npos)
                << name;
        }
        return switches;
    }
};

void expectUsageError(const CommandResult& result) {
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors, "");
}

TEST_F(CommandLineTest, VersionIsPrinted) {
    const CommandResult result = zrkey({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "zrkey " ZRKEY_VERSION "\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(CommandLineTest, HelpNamesTheCommands) {
    const CommandResult result = zrkey({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.output.find("\n  run "), std::string::npos) << result.output;
    EXPECT_EQ(result.errors, "");
}

TEST_F(CommandLineTest, HelpOfRunShowsItsUsage) {
    const CommandResult result = zrkey({"run", "--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.output.find("zrkey run [OPTIONS] FILE [ARG...]\n"), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("-v,--verbose"), std::string::npos) << result.output;
}

TEST_F(CommandLineTest, EverySwitchOfRunStandsInItsReference) {
    EXPECT_GE(expectSwitchesIn("script-reference.md", {"run"}), 4);
}

TEST_F(CommandLineTest, EverySwitchOfTheCommandsStandsInTheirReference) {
    const std::vector<std::vector<std::string>> commands = {
        {"list"},           {"info"},         {"login"},          {"pin", "change"},
        {"file", "exists"}, {"file", "read"}, {"file", "create"}, {"file", "delete"},
        {"cert", "list"},   {"cert", "read"}, {"sign"},           {"verify"},
        {"digest"}};
    for (const std::vector<std::string>& command : commands) {
        EXPECT_GE(expectSwitchesIn("command-reference.md", command), 7) << command.back();
    }
}

TEST_F(CommandLineTest, NoCommandIsAUsageError) {
    expectUsageError(zrkey({}));
}

TEST_F(CommandLineTest, UnknownCommandIsAUsageError) {
    const CommandResult result = zrkey({"dance"});
    expectUsageError(result);
    EXPECT_EQ("zrkey: there is no such command; zrkey --help shows the usage\n", result.errors);
}

TEST_F(CommandLineTest, AWordTooManyIsNotRepeated) {
    // It may be a PIN.
    const CommandResult word = zrkey({"login", "97531"});
    expectUsageError(word);
    EXPECT_EQ("zrkey: an argument is not expected; zrkey --help shows the usage\n", word.errors);
    const CommandResult option = zrkey({"login", "--pni=97531"});
    expectUsageError(option);
    EXPECT_EQ("zrkey: not expected: --pni; zrkey --help shows the usage\n", option.errors);
}

TEST_F(CommandLineTest, RunWithoutAFileIsAUsageError) {
    const CommandResult result = zrkey({"run"});
    expectUsageError(result);
    EXPECT_NE(result.errors.find("FILE"), std::string::npos) << result.errors;
}

TEST_F(CommandLineTest, UnknownOptionOfRunIsAUsageError) {
    const CommandResult result = zrkey({"run", "--dance", "script.js"});
    expectUsageError(result);
    EXPECT_NE(result.errors.find("--dance"), std::string::npos) << result.errors;
}

}  // namespace
}  // namespace zr::test
