// Options before the command, and zrkey help.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class WordOrderTest : public CommandTest {
protected:
    static void expectSame(const std::vector<std::string>& words,
                           const std::vector<std::string>& usual) {
        const CommandResult expected = zrkey(usual);
        const CommandResult result = zrkey(words);
        EXPECT_EQ(expected.exitCode, result.exitCode) << words.front();
        EXPECT_EQ(expected.output, result.output);
        EXPECT_EQ(expected.errors, result.errors);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_NE("", result.output);
    }
};

TEST_F(WordOrderTest, GlobalOptionsMayStandBeforeTheCommand) {
    expectSame({"--json", "list"}, {"list", "--json"});
    expectSame({"-q", "list"}, {"list", "--quiet"});
    setEnvironment("ZRKEY_MODULE", "");
    expectSame({"--module", module.path(), "list"}, {"list", "--module", module.path()});
    expectSame({"--module=" + module.path(), "--json", "info", "--index", "0"},
               {"info", "--module", module.path(), "--json", "--index", "0"});
    expectSame({"--module", module.path(), "cert", "--json", "list"},
               {"cert", "list", "--module", module.path(), "--json"});
    // A value that is the name of a command.
    std::filesystem::create_directory("list");
    expectSame({"--workdir", "list", "config", "path"}, {"config", "path", "--workdir", "list"});
    expectSame({"--config", "config.xml", "config", "show"},
               {"config", "show", "--config", "config.xml"});
}

TEST_F(WordOrderTest, OptionBeforeRunIsNotAnArgumentOfTheScript) {
    writeFile("script.js", "print(arguments.join(' '));");
    expectSame({"-v", "run", "script.js", "--json", "help"},
               {"run", "-v", "script.js", "--json", "help"});
    expectUsageError({"--json", "run", "script.js"}, "unknown option --json",
                     "run [OPTIONS] FILE [ARG...]");
}

TEST_F(WordOrderTest, HelpOfACommandIsItsPage) {
    expectSame({"help"}, {"--help"});
    expectSame({"help", "list"}, {"list", "--help"});
    expectSame({"help", "pin"}, {"pin", "--help"});
    expectSame({"help", "file", "read"}, {"file", "read", "--help"});
    expectSame({"help", "help"}, {"help", "--help"});
    expectSame({"--json", "help", "list"}, {"list", "--help"});
}

TEST_F(WordOrderTest, HelpNeverRunsTheCommand) {
    expectSame({"help", "file", "delete", "8"}, {"file", "delete", "--help"});
    writeFile("script.js", "print('ran');");
    expectSame({"help", "run", "script.js"}, {"run", "--help"});
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(WordOrderTest, HelpOfAnUnknownCommandIsWrongUsage) {
    expectUsageError({"help", "digets"}, "unknown command \"digets\" (did you mean digest?)",
                     "[OPTIONS] COMMAND");
    expectUsageError({"help", "pin", "chnge"}, "unknown command \"chnge\" (did you mean change?)",
                     "pin [OPTIONS] COMMAND");
    expectUsageError({"help", "--"}, "argument 2 is not expected", "[OPTIONS] COMMAND");
}

TEST_F(WordOrderTest, OptionsWithoutACommandAreWrongUsage) {
    const std::string commands =
        "a command is missing: run, shell, list, info, login, pin, file, cert, sign, verify, "
        "digest, "
        "doctor, watch, trace, config, browser, help";
    expectUsageError({"--json"}, commands, "[OPTIONS] COMMAND");
    expectUsageError({"--module"}, commands, "[OPTIONS] COMMAND");
    expectUsageError({"--label", "A", "list"}, "unknown option --label", "list [OPTIONS]");
}

}  // namespace
}  // namespace zr::test
