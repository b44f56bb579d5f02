// The command line of zrkey: help, version and wrong usage.
#include "child_command.h"

#include <fstream>
#include <iterator>
#include <regex>

namespace zr::test {
namespace {

using CommandLineTest = ChildCommandTest;

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
    std::ifstream stream(ZRKEY_DOCS "/script-reference.md", std::ios::binary);
    const std::string reference{std::istreambuf_iterator<char>(stream), {}};
    const std::string help = zrkey({"run", "--help"}).output;
    const std::regex pattern("[ ,](--?[a-z][a-z-]*)");
    int switches = 0;
    for (std::sregex_iterator match(help.begin(), help.end(), pattern), end; match != end;
         ++match) {
        ++switches;
        EXPECT_NE(reference.find('`' + (*match)[1].str() + '`'), std::string::npos)
            << (*match)[1].str();
    }
    EXPECT_GE(switches, 4);
}

TEST_F(CommandLineTest, NoCommandIsAUsageError) {
    expectUsageError(zrkey({}));
}

TEST_F(CommandLineTest, UnknownCommandIsAUsageError) {
    expectUsageError(zrkey({"dance"}));
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
