// zrkey run: scripts that are no files, and the PIN that the command line gives to a script.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class RunSourceTest : public ChildCommandTest {
protected:
    static void expectOutput(const CommandResult& result, const std::string& output) {
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ(output, result.output);
        EXPECT_EQ("", result.errors);
    }
    static void expectErrors(const CommandResult& result, const std::string& errors) {
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ("", result.output);
        EXPECT_EQ(errors, result.errors);
    }
};

TEST_F(RunSourceTest, StandardInputIsAScript) {
    expectOutput(zrkey({"run", "-", "a", "-v"}, "print('ran', arguments);"), "ran a,-v\n");
    expectOutput(zrkey({"run", "-"}, "\xEF\xBB\xBF#!/usr/bin/env zrkey\nprint('there');"),
                 "there\n");
    expectOutput(zrkey({"run", "-"}, ""), "");
    expectErrors(zrkey({"run", "-"}, "\nthrow new Error('no');"), "standard input:2: no\n");
}

TEST_F(RunSourceTest, CommandLineIsAScript) {
    expectOutput(zrkey({"run", "-e", "print('ran', arguments)", "a", "-v"}), "ran a,-v\n");
    expectOutput(zrkey({"run", "--eval", "print('ran')"}), "ran\n");
    expectErrors(zrkey({"run", "-e", "throw new Error('no')"}), "command line:1: no\n");
}

TEST_F(RunSourceTest, CommandLineIsTheScriptAndTheFirstWordAnArgument) {
    writeFile("script.js", "print('from the file');");
    expectOutput(zrkey({"run", "-e", "print(arguments)", "script.js"}), "script.js\n");
}

TEST_F(RunSourceTest, TimeLimitHoldsForEverySource) {
    const std::string endless = "for (;;) {}";
    expectErrors(zrkey({"run", "--time-limit", "0.2", "-"}, endless),
                 "standard input:1: RangeError: execution timeout\n");
    expectErrors(zrkey({"run", "--time-limit", "0.2", "-e", endless}),
                 "command line:1: RangeError: execution timeout\n");
}

TEST_F(RunSourceTest, PinFromStandardInputLeavesTheRestToTheScript) {
    expectOutput(zrkey({"run", "--pin", "-", "-e", "print(readPin(), readLine(), readLine())"},
                       "1234\nnext\n"),
                 "1234 next null\n");
}

using RunPinTest = CommandTest;

TEST_F(RunPinTest, PinComesFromTheSourcesOfTheOtherCommands) {
    expectOutput({"run", "--pin", "env:TEST_PIN", "-e", "print(readPin('not shown'))"}, "1234\n");
    writeFile("pin.txt", "Gr\u00fc\u00df \U0001F511\nmore\n");
    expectOutput({"run", "--pin", "file:pin.txt", "-e", "print(readPin())"},
                 "Gr\u00fc\u00df \U0001F511\n");
}

TEST_F(RunPinTest, SourceWithoutAPinEndsTheCommandBeforeTheScript) {
    expectFailure({"run", "--pin", "env:TEST_NO_PIN", "-e", "print('ran')"}, 2,
                  "read the PIN from the variable TEST_NO_PIN: it is not set; set it, or give "
                  "another source");
}

TEST_F(RunPinTest, PinThatTheScriptDoesNotAskForIsNotShown) {
    expectOutput({"run", "--pin", "env:TEST_PIN", "-e", "print('ran')"}, "ran\n");
}

TEST_F(RunPinTest, WrongUsageIsRefused) {
    const std::string run = "run [OPTIONS] FILE [ARG...]";
    for (const char* source : {"-", "fd:0"}) {
        expectUsageError({"run", "--pin", source, "-"}, "--pin: standard input contains the script",
                         run);
    }
    expectUsageError({"run", "--pin", "1234", "-e", "print(1)"},
                     "--pin: the source must be prompt, env:NAME, file:PATH, fd:N or -", run);
    expectUsageError({"run"}, "FILE is required", run);
    expectUsageError({"run", "-e"}, "--eval needs a value", run);
    expectUsageError({"run", "-e", "print(1)", "--nothing"}, "unknown option --nothing", run);
    // The options after it are not to blame.
    expectUsageError({"run", "--nothing", "-e", "print(1)"}, "unknown option --nothing", run);
    expectUsageError({"--json", "run", "-e", "print(1)"}, "unknown option --json", run);
}

}  // namespace
}  // namespace zr::test
