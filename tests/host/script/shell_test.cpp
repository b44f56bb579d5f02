// zrkey shell without a terminal: lines of standard input, results, errors, and the exit code.
#include "tests/host/child_command.h"
#include "tests/host/configuration_folders.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class ShellTest : public ChildCommandTest {
protected:
    static CommandResult type(const std::string& input, std::vector<std::string> options = {}) {
        options.insert(options.begin(), "shell");
        return zrkey(options, input);
    }
    static void expectShown(const std::string& input, const std::string& output) {
        const CommandResult result = type(input + "\n");
        EXPECT_EQ(0, result.exitCode) << input;
        EXPECT_EQ(output + "\n", result.output) << input;
        EXPECT_EQ("", result.errors) << input;
    }
};

TEST_F(ShellTest, ResultsOfStatementsAreShown) {
    expectShown("1 + 1", "2");
    expectShown("'a\"b\\\\\\n\\u001b'", R"("a\"b\\\n\x1b")");
    expectShown("null", "null");
    expectShown("[1, 'a', [2, [3]]]", "[1, \"a\", [2, [...]]]");
    expectShown("{a: 1, b: {c: {d: 1}}}", "{a: 1, b: {c: {...}}}");
    expectShown("(function named() {})", "[function named]");
    expectShown("(function () {})", "[function]");
    expectShown("new Uint8Array([1, 2, 255])", "Uint8Array(3) 01 02 ff");
    expectShown("new Uint8Array(17).length; new Uint8Array(17)",
                "Uint8Array(17) 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ...");
    expectShown("new Array(30)",
                "[undefined, undefined, undefined, undefined, undefined, undefined, undefined, "
                "undefined, undefined, undefined, undefined, undefined, undefined, undefined, "
                "undefined, undefined, undefined, undefined, undefined, undefined, ...]");
    expectShown("/a/g", "/a/g");
    expectShown("new TypeError('no')", "TypeError: no");
    expectShown("new TokenProvider()", "[TokenProvider]");
    expectShown("var self = {}; self.self = self", "{self: {self: {...}}}");
    // Its end is cut at 20, whatever its length.
    expectShown("Symbol('x')", "[symbol]");
}

TEST_F(ShellTest, StatementsWithoutAResultShowNothing) {
    const CommandResult result = type("var a = 2\n\nundefined\nfunction f() { return a }\nf()\n");
    EXPECT_EQ("2\n", result.output);
    EXPECT_EQ("", result.errors);
}

TEST_F(ShellTest, BlockThatIsNoObjectIsRun) {
    expectShown("{ var b = 3; b }", "3");
}

TEST_F(ShellTest, IncompleteStatementGoesOnInTheNextLine) {
    expectShown("function f(a) {\n\n  return a\n}\nf(4)", "4");
    expectShown("[1,\n2]", "[1, 2]");
    expectShown("1 +\n2", "3");
    expectShown("/* a\ncomment */ 5", "5");
    expectShown("'a\\\nb'", "\"ab\"");
    expectShown("if (true)\n6", "6");
    expectShown("[')',\n'}', /* ] */ 7 // )\n].length", "3");
    expectShown("try {}\ncatch (e) {}\n7", "7");
    expectShown("switch (1) {\ncase 1:\n8\n}", "8");
}

TEST_F(ShellTest, MistakeAtTheEndOfALineIsNotIncomplete) {
    for (const char* line : {"foo bar", "1 +)", "'abc", "/abc", "a b c", "return", "break", "}",
                             "f(1))", "1 ]", "'}' /* } */ }", "var if"}) {
        const CommandResult result = type(std::string(line) + "\n'next'\n");
        EXPECT_EQ("\"next\"\n", result.output) << line;
        EXPECT_EQ(0u, result.errors.find("shell:1: SyntaxError: ")) << result.errors;
        EXPECT_EQ(1, result.exitCode) << line;
    }
}

TEST_F(ShellTest, ErrorIsShownAndTheNextStatementRuns) {
    const CommandResult result = type("missing\nthrow 'text'\n'next'\n");
    EXPECT_EQ("\"next\"\n", result.output);
    EXPECT_EQ("shell:1: ReferenceError: identifier 'missing' undefined\nshell: uncaught text\n",
              result.errors);
    EXPECT_EQ(1, result.exitCode);
}

TEST_F(ShellTest, NewerSyntaxIsExplained) {
    EXPECT_NE(std::string::npos, type("let a = 1\n").errors.find("scripts are ECMAScript 5.1"));
}

TEST_F(ShellTest, EndOfInputInAStatementIsAnError) {
    const CommandResult result = type("(1 +");
    EXPECT_EQ(0u, result.errors.find("shell:1: SyntaxError: ")) << result.errors;
    EXPECT_EQ(1, result.exitCode);
}

TEST_F(ShellTest, LastLineNeedsNoEnd) {
    EXPECT_EQ("7\n", type("7").output);
    EXPECT_EQ("8\n", type("8\r\n").output);
    EXPECT_EQ("", type("").output);
    EXPECT_EQ(0, type("").exitCode);
}

TEST_F(ShellTest, ExitEndsTheShellWithItsCode) {
    const CommandResult result = type("missing\nexit(9)\n'next'\n");
    EXPECT_EQ(9, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_EQ(std::string::npos, result.errors.find("exit")) << result.errors;
    EXPECT_EQ(0, type("try { exit() } catch (e) {}\n'next'\n").exitCode);
}

TEST_F(ShellTest, ReadLineTakesTheNextLine) {
    EXPECT_EQ("\"the line\"\n9\n", type("readLine()\nthe line\n9\n").output);
}

TEST_F(ShellTest, GlobalsOfScriptsAreThere) {
    writeFile("part.js", "exports.value = 10;");
    expectShown("require('./part').value", "10");
    expectShown("arguments.length", "0");
}

TEST_F(ShellTest, PinOfTheCommandLineIsNotShown) {
    setEnvironment("TEST_PIN", "1234");
    const CommandResult result = type("readPin()\npin = readPin\n'x'\n", {"--pin", "env:TEST_PIN"});
    EXPECT_EQ("[function]\n\"x\"\n", result.output);
    EXPECT_EQ(
        "5\n",
        type("var pin = readPin(); print(pin.length + 1)\n", {"--pin", "env:TEST_PIN"}).output);
}

TEST_F(ShellTest, TimeLimitIsThatOfAStatement) {
    const CommandResult result =
        type("sleep(0.3)\nsleep(0.3)\nfor (;;) {}\n'next'\n", {"--time-limit", "0.5"});
    EXPECT_EQ("\"next\"\n", result.output);
    EXPECT_EQ("shell:1: RangeError: execution timeout\n", result.errors);
}

TEST_F(ShellTest, StatementThatTheEngineCannotStopEndsTheProcess) {
    const CommandResult result =
        type("[].indexOf.call({length: 2147483647}, 1)\n'next'\n", {"--time-limit", "0.3"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_NE(std::string::npos, result.errors.find("execution timeout")) << result.errors;
}

TEST_F(ShellTest, MemoryLimitHolds) {
    const CommandResult result =
        type("new Array(5e6).join('x').length\n'next'\n", {"--memory-limit", "4"});
    EXPECT_EQ("\"next\"\n", result.output);
    EXPECT_NE(std::string::npos, result.errors.find("alloc failed")) << result.errors;
}

TEST_F(ShellTest, ModuleOfTheOptionIsLoaded) {
    const ConfigurationFolders folders(std::filesystem::current_path());
    const std::vector<std::string> options = {"--module", ZR_INSTANT_MODULE};
    const CommandResult result =
        type("var token = provider.OpenKey(0)\ntoken\ntoken.GetLabel()\nprovider\n", options);
    EXPECT_EQ("[Token]\n\"Instant\"\n[TokenProvider]\n", result.output);
    EXPECT_EQ("", result.errors);
    EXPECT_EQ(3, type("'ran'\n", {"--module", "missing.so"}).exitCode);
}

TEST_F(ShellTest, WrongUsageIsRefused) {
    const CommandResult result = type("", {"file.js"});
    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ(
        "zrkey: argument 2 is not expected; usage: zrkey shell [OPTIONS]; zrkey help shell "
        "shows more\n",
        result.errors);
}

}  // namespace
}  // namespace zr::test
