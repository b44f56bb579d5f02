// exit: what runs after it, what cannot stop it, and what it returns.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class ScriptExitTest : public ChildCommandTest {
protected:
    static void expectExit(const std::string& text, int exitCode, const std::string& output = {}) {
        const CommandResult result = runText(text, {"--time-limit", "60"});
        EXPECT_EQ(exitCode, result.exitCode) << text;
        EXPECT_EQ(output, result.output) << text;
        EXPECT_EQ("", result.errors) << text;
    }
};

TEST_F(ScriptExitTest, CodeBecomesTheExitCode) {
    expectExit("print('before'); exit(3); print('after');", 3, "before\n");
    expectExit("exit(); print('after');", 0);
    expectExit("exit(0); throw new Error('after');", 0);
    expectExit("exit(255);", 255);
}

TEST_F(ScriptExitTest, OtherCodesAreAnError) {
    for (const char* code : {"-1", "256", "1.5", "NaN", "'3'", "null", "{}"}) {
        const CommandResult result = runText(std::string("exit(") + code + ");");
        EXPECT_EQ(1, result.exitCode) << code;
        EXPECT_EQ("script.js:1: RangeError: exit: the code is not a whole number from 0 to 255\n",
                  result.errors)
            << code;
    }
}

TEST_F(ScriptExitTest, CannotBeCaught) {
    expectExit("try { exit(3); } catch (error) { print('caught'); } finally { print('finally'); }",
               3);
    expectExit("for (;;) { try { exit(3); } catch (error) { continue; } finally { continue; } }",
               3);
    expectExit(
        "[1].forEach(function () { try { exit(3); } catch (error) { print(1); } });\n"
        "print(2);",
        3);
    expectExit(
        "var thread = new Duktape.Thread(function () { exit(3); });\n"
        "try { Duktape.Thread.resume(thread); } catch (error) { print('caught'); }",
        3);
    expectExit(
        "Duktape.errThrow = Duktape.errCreate = function () { print('called'); };\n"
        "try { exit(3); } catch (error) { print('caught'); }",
        3);
    expectExit(
        "var text = { toString: function () { exit(3); } };\n"
        "try { print(text); } catch (error) { print('caught'); }",
        3);
    writeFile("module.js", "try { exit(3); } catch (error) { print('caught'); }");
    expectExit("try { require('module'); } catch (error) { print('caught'); }", 3);
}

TEST_F(ScriptExitTest, FinalizersRunAfterIt) {
    expectExit(
        "var object = {}; object.self = object;\n"
        "Duktape.fin(object, function () { print('finalized'); });\nexit(3);",
        3, "finalized\n");
}

TEST_F(ScriptExitTest, FinalizerCanExitToo) {
    expectExit("print('before'); Duktape.fin({}, function () { exit(3); }); print('after');", 3,
               "before\n");
    expectExit(
        "var object = {}; object.self = object;\n"
        "Duktape.fin(object, function () { exit(3); });\nprint('end');",
        3, "end\n");
}

TEST_F(ScriptExitTest, FirstCodeCounts) {
    expectExit(
        "var object = {}; object.self = object;\n"
        "Duktape.fin(object, function () { exit(4); });\nexit(3);",
        3);
}

TEST_F(ScriptExitTest, ErrorBeforeItIsNotHidden) {
    const CommandResult result = runText("throw { toString: function () { exit(0); } };");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("script.js: an error that cannot be described\n", result.errors);
}

TEST_F(ScriptExitTest, EndlessFinalizerAfterItEndsAtTheTimeLimit) {
    const CommandResult result = runText(
        "var object = {}; object.self = object;\n"
        "Duktape.fin(object, function () { for (;;) {} });\nexit(0);",
        {"--time-limit", "0.3"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("script.js: RangeError: execution timeout\n", result.errors);
}

using ScriptExitTokenTest = CommandTest;

TEST_F(ScriptExitTokenTest, TokensAreClosed) {
    const CommandResult result =
        zrkey({"run", "-e",
               "var provider = new TokenProvider(); provider.Load(arguments[0]);\n"
               "var token = provider.OpenKey(0); exit(3);",
               module.path()});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_EQ("", result.errors);
    EXPECT_EQ(1u, module.count("C_OpenSession"));
    EXPECT_EQ(1u, module.count("C_CloseSession"));
}

}  // namespace
}  // namespace zr::test
