// What is shown of an error that a script does not catch: its callers, and what explains it.
#include "host/script/syntax.h"
#include "tests/host/child_command.h"

namespace zr::test {
namespace {

class UncaughtErrorTest : public ChildCommandTest {
protected:
    static void expectErrors(const std::string& text, const std::string& errors) {
        const CommandResult result = runText(text);
        EXPECT_EQ(1, result.exitCode) << text;
        EXPECT_EQ(errors, result.errors) << text;
    }
};

TEST_F(UncaughtErrorTest, CallersInTheScriptAreShown) {
    expectErrors(
        "'use strict';\nfunction inner() {\n    throw new TypeError('no');\n}\n"
        "function Outer() {\n    [1].forEach(function () { inner(); });\n}\n"
        "new Outer();\n",
        "script.js:3: TypeError: no\n"
        "    at inner (script.js:3)\n"
        "    at script.js:6\n"
        "    at Outer (script.js:6)\n"
        "    at script.js:8\n");
}

TEST_F(UncaughtErrorTest, CallerThatTheLineNamesIsNotRepeated) {
    expectErrors("throw new Error('no');", "script.js:1: no\n");
    expectErrors("var error = new Error('no');\nthrow error;", "script.js:1: no\n");
}

TEST_F(UncaughtErrorTest, ControlCharactersOfNamesAreNotShown) {
    expectErrors(
        "var error = new Error('no');\n"
        "Object.defineProperty(error, 'stack', {value:\n"
        "    'x\\n    at a\\u001b[2J (\\u009bfile:1)\\n    at b\\r (c:2) strict\\nd'});\n"
        "throw error;",
        "script.js:1: no\n    at a?[2J (??file:1)\n    at b? (c:2)\n");
}

TEST_F(UncaughtErrorTest, ListThatIsNoTextIsLeftOut) {
    for (const char* stack : {"value: 1", "value: 'text'", "value: '    at'", "value: ''",
                              "get: function () { throw 1; }", "value: Symbol('a')"}) {
        expectErrors(std::string("var error = new Error('no');\n"
                                 "Object.defineProperty(error, 'stack', {") +
                         stack + "});\nthrow error;",
                     "script.js:1: no\n");
    }
}

TEST_F(UncaughtErrorTest, DeepRecursionShowsTheLastCallers) {
    const CommandResult result = runText("function again() { again(); }\nagain();");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(0u, result.errors.find("script.js:1: RangeError: ")) << result.errors;
    EXPECT_NE(std::string::npos, result.errors.find("\n    at again (script.js:1)\n"));
    EXPECT_LT(result.errors.size(), 1000u);
}

TEST_F(UncaughtErrorTest, SyntaxErrorSaysWhatTheEngineKnows) {
    const std::string edition = "    scripts are ECMAScript 5.1 with parts of later editions";
    for (const auto& [line, has] : std::vector<std::pair<std::string, std::string>>{
             {"let a = 1;", "; line 2 has \"let\""},
             {"var f = (a) => a;", "; line 2 has an arrow function"},
             {"print(`a`);", "; line 2 has a template text"},
             {"class A {}", "; line 2 has \"class\""},
             {"const { a } = {};", "; line 2 has destructuring"},
             {"var a = ;", ""}}) {
        const CommandResult result = runText("var before;\n" + line + "\nvar after;\n");
        EXPECT_EQ(1, result.exitCode) << line;
        EXPECT_EQ(0u, result.errors.find("script.js:2: SyntaxError: ")) << result.errors;
        EXPECT_TRUE(result.errors.ends_with("\n" + edition + has + "\n")) << result.errors;
    }
}

TEST_F(UncaughtErrorTest, SyntaxErrorOfSourceMadeAtRunTimeIsNotExplained) {
    const CommandResult result = runText("new Function('let a = 1');");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(std::string::npos, result.errors.find("ECMAScript")) << result.errors;
}

TEST(NewerSyntaxTest, IsFoundInALine) {
    const std::pair<const char*, const char*> lines[] = {
        {"var f = a => a;", "an arrow function"},
        {"print(`a${1}`)", "a template text"},
        {"f(...list)", "\"...\""},
        {"a = b ?? c", "\"?\?\""},
        {"a = b?.c", "\"?.\""},
        {"function * g() {}", "a generator"},
        {"try { f(); } catch { g(); }", "catch without a name"},
        {"var {a} = b", "destructuring"},
        {"const [ a ] = b", "destructuring"},
        {"for (let i = 0; i < 1; ++i) {}", "\"let\""},
        {"export class A {}", "\"class\""},
        {"async function f() {}", "\"async\""},
        {"import a from 'b'", "\"import\""},
        {"for (const a of list) {}", "a loop with \"of\""},
        {"function f(a, b = 1) {}", "a default value"},
    };
    for (const auto& [line, name] : lines) {
        const char* const found = host::findNewerSyntax(line);
        EXPECT_STREQ(name, found) << line;
    }
}

TEST(NewerSyntaxTest, IsNotFoundInTextsCommentsAndNames) {
    for (const char* line :
         {"", "var a = 'let x => `y`';", "f(\"a \\\" class\") // => let", "var letter = classes;",
          "a.class = b.of;", "x = {class: 1, of: 2}", "function f(a) { var b = a; }",
          "a = b ? .5 : c", "if (a >= b) {}", "var a = \"unterminated => "}) {
        EXPECT_EQ(nullptr, host::findNewerSyntax(line)) << line;
    }
}

}  // namespace
}  // namespace zr::test
