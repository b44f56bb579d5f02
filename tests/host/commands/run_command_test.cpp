// zrkey run: standard output, standard error and exit code of whole scripts.
#include "tests/host/child_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace zr::test {
namespace {

using RunCommandTest = ChildCommandTest;

void expectSuccess(const CommandResult& result, const std::string& output) {
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, output);
    EXPECT_EQ(result.errors, "");
}

void expectFailure(const CommandResult& result, const std::string& errors) {
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, errors);
}

TEST_F(RunCommandTest, PrintWritesItsArgumentsOnALine) {
    expectSuccess(runText("print('a', 2.5, true, null, undefined, [1, 2]); print();"),
                  "a 2.5 true null undefined 1,2\n\n");
}

TEST_F(RunCommandTest, OutputBytesAreUnchanged) {
    expectSuccess(runText("print('a\\u0000b\\r\\nc\\nd\\u001a');"),
                  std::string("a\0b\r\nc\nd\x1a\n", 10));
}

TEST_F(RunCommandTest, TextIsUtf8InTheScriptAndOnOutput) {
    expectSuccess(runScript("unicode.js"), "Grüße, Ключ, 鍵, 🔑\n2\nhalf: \xEF\xBF\xBD\n");
}

TEST_F(RunCommandTest, ArgumentsArePassedUnchanged) {
    expectSuccess(runScript("arguments.js", {"-v", "--help", "two words", "{}", "[a,b]", "run"}),
                  "6\n<-v>\n<--help>\n<two words>\n<{}>\n<[a,b]>\n<run>\n");
}

TEST_F(RunCommandTest, ArgumentsMayBeMissing) {
    expectSuccess(runScript("arguments.js"), "0\n");
}

TEST_F(RunCommandTest, ByteOrderMarkAndInterpreterLineAreSkipped) {
    expectSuccess(runText("\xEF\xBB\xBF#!/usr/bin/env zrkey\nprint('there');\n"), "there\n");
}

TEST_F(RunCommandTest, EmptyFileIsAScript) {
    expectSuccess(runText(""), "");
}

TEST_F(RunCommandTest, MissingFileIsNamed) {
    const CommandResult result = zrkey({"run", "nowhere.js"});
    expectFailure(result,
                  "zrkey: cannot read \"nowhere.js\": No such file or directory; check the path "
                  "and its permissions\n");
    EXPECT_EQ(result.output, "");
}

TEST_F(RunCommandTest, FolderIsNotReadAsAScript) {
    std::filesystem::create_directory("folder");
    // The two systems refuse it with different errors.
    const CommandResult result = zrkey({"run", "folder"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.find("zrkey: cannot read \"folder\": "), 0U) << result.errors;
}

TEST_F(RunCommandTest, SyntaxErrorNamesFileAndLine) {
    const CommandResult result = runScript("syntax_error.js");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.find(scriptPath("syntax_error.js") + ":4: SyntaxError: "), 0U)
        << result.errors;
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 2);
}

TEST_F(RunCommandTest, UncaughtErrorNamesFileAndLineAfterEarlierOutput) {
    const CommandResult result = runText("print('before');\n\nthrow new Error('enough');\n");
    expectFailure(result, "script.js:3: enough\n");
    EXPECT_EQ(result.output, "before\n");
}

TEST_F(RunCommandTest, UncaughtErrorOfAnotherKindKeepsItsName) {
    expectFailure(runText("\nthrow new RangeError('too far');"),
                  "script.js:2: RangeError: too far\n");
}

TEST_F(RunCommandTest, UncaughtValueIsShown) {
    expectFailure(runText("throw 'a text';"), "script.js: uncaught a text\n");
}

TEST_F(RunCommandTest, ErrorThatCannotBeDescribedStillFails) {
    expectFailure(runText("throw { toString: function () { throw 1; } };"),
                  "script.js: an error that cannot be described\n");
}

TEST_F(RunCommandTest, UncaughtErrorIsShownWithoutControlCharacters) {
    expectFailure(runText("throw new Error('a\\nb\\r\\u001b[2Jc\\u009bd');"),
                  "script.js:1: a?b??[2Jc??d\n");
    expectFailure(runText("var error = new Error('x');\nObject.defineProperty(error, 'fileName', "
                          "{value: 'a\\u001bb\\nc'});\nthrow error;"),
                  "a?b?c:1: x\n    at script.js:1\n");
    // Windows has an error of its own for a name that no file can have.
    EXPECT_EQ(std::fopen("no\x1bwhere.js", "rb"), nullptr);
    const std::string reason = std::generic_category().message(errno);
    expectFailure(
        zrkey({"run", "no\x1bwhere.js"}),
        "zrkey: cannot read \"no?where.js\": " + reason + "; check the path and its permissions\n");
}

TEST_F(RunCommandTest, FailureOfAMemberNamesTheCallingLine) {
    expectFailure(runText("var provider = new TokenProvider();\n"
                          "function count() {\n    return provider.GetKeyCount();\n}\ncount();\n"),
                  "script.js:3: GetKeyCount failed: E_FAIL (0x80004005)\n"
                  "    at count (script.js:3)\n    at script.js:5\n");
}

TEST_F(RunCommandTest, ProviderWithoutAModuleReturnsItsResults) {
    expectSuccess(zrkey({"run", "--late-bound", ZRKEY_SCRIPTS "/provider.js"}),
                  "function function function function\n"
                  "undefined undefined\n"
                  "GetKeyCount: E_FAIL (0x80004005) 2147500037\n"
                  "GetKeyCount: E_INVALIDARG (0x80070057) 2147942487\n"
                  "OpenKey: E_INVALIDARG (0x80070057) 2147942487\n"
                  "OpenKey: E_FAIL (0x80004005) 2147500037\n"
                  "Load: E_INVALIDARG (0x80070057) 2147942487\n"
                  "Load: E_INVALIDARG (0x80070057) 2147942487\n"
                  "Unload: true\n");
}

TEST_F(RunCommandTest, LoadOfAMissingModuleFails) {
    expectFailure(runText("new TokenProvider().Load('no/such/module');"),
                  "script.js:1: Load failed: E_FAIL (0x80004005)\n");
}

TEST_F(RunCommandTest, DiagnosticsAreDropped) {
    expectSuccess(runText("new TokenProvider().Unload(); print('done');"), "done\n");
}

TEST_F(RunCommandTest, DiagnosticsGoToStandardErrorOnRequest) {
    for (const char* option : {"-v", "--verbose"}) {
        const CommandResult result =
            runText("new TokenProvider().Unload(); print('done');", {option, "--late-bound"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output, "done\n");
        EXPECT_NE(result.errors.find("[ZComponentImpl::GetIDsOfNames] lpszName = [Unload]"),
                  std::string::npos)
            << result.errors;
    }
}

TEST_F(RunCommandTest, DroppedObjectsAreCollected) {
    expectSuccess(runScript("collected.js"), "2000 providers\n");
}

TEST_F(RunCommandTest, EndlessRecursionIsAnError) {
    expectSuccess(runScript("deep_recursion.js"),
                  "function: RangeError\nnative: RangeError\nparser: RangeError\n"
                  "finalizer: survived\n");
}

TEST_F(RunCommandTest, DeepNestingOfTheEnginesFunctionsIsAnError) {
    expectSuccess(runScript("deep_nesting.js"),
                  "one: no error\nwritten: RangeError\nread: RangeError\nlibrary: RangeError\n");
}

TEST_F(RunCommandTest, ScriptThatCatchesErrorsEndsWhenItsTimeIsUp) {
    expectFailure(
        runText("for (;;) { try { for (;;) {} } catch (error) {} }", {"--time-limit", "0.2"}),
        "script.js:1: RangeError: execution timeout\n");
}

TEST_F(RunCommandTest, ScriptBeyondItsMemoryFails) {
    const std::string grow = "; text += text); print('had it');";
    const std::vector<std::string> limit = {"--memory-limit", "16"};
    expectFailure(runText("for (var text = 'x'; text.length < 1e9" + grow, limit),
                  "script.js:1: alloc failed\n");
    expectSuccess(runText("for (var text = 'x'; text.length < 1e6" + grow, limit), "had it\n");
}

TEST_F(RunCommandTest, InvalidLimitsAreWrongUsage) {
    for (const char* option : {"--time-limit", "--memory-limit"}) {
        for (const char* value : {"0", "-1", "many", "nan", "-nan", "inf", "1e999"}) {
            EXPECT_EQ(zrkey({"run", option, value, "any.js"}).exitCode, 2) << option << value;
        }
    }
}

}  // namespace
}  // namespace zr::test
