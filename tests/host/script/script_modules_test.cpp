// require: where it looks for modules, and what a module is.
#include "tests/host/child_command.h"

namespace zr::test {
namespace {

class ScriptModulesTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        std::filesystem::create_directory("lib");
    }
    static void expectOutput(const std::string& text, const std::string& output) {
        expectResult(runText(text), output);
    }
    static void expectResult(const CommandResult& result, const std::string& output) {
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ(output, result.output);
        EXPECT_EQ("", result.errors);
    }
    static void expectErrors(const std::string& text, const std::string& errors) {
        const CommandResult result = runText(text);
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ(errors, result.errors);
    }
};

TEST_F(ScriptModulesTest, ExportsAreReturned) {
    writeFile("named.js", "exports.one = 1; this.two = 2; var hidden = 3; // the end");
    writeFile("replaced.js", "module.exports = function () { return 'called'; };");
    expectOutput(
        "print(JSON.stringify(require('./named')), require('named.js').two);\n"
        "print(require('./replaced')(), typeof hidden, typeof exports, typeof module);",
        "{\"one\":1,\"two\":2} 2\ncalled undefined undefined undefined\n");
}

TEST_F(ScriptModulesTest, ModuleIsFoundBesideTheFileThatRequiresIt) {
    writeFile("top.js", "module.exports = 'top';");
    writeFile("lib/inner.js", "exports.top = require('../top'); exports.near = require('near');");
    writeFile("lib/near.js", "module.exports = 'near';");
    expectOutput("print(JSON.stringify(require('./lib/inner')));",
                 "{\"top\":\"top\",\"near\":\"near\"}\n");
    writeFile("lib/main.js", "print(require('./near'));");
    expectResult(zrkey({"run", "lib/main.js"}), "near\n");
}

TEST_F(ScriptModulesTest, ScriptThatIsNoFileLooksInTheCurrentDirectory) {
    writeFile("lib/near.js", "module.exports = 'near';");
    expectResult(zrkey({"run", "-e", "print(require('./lib/near'))"}), "near\n");
    expectResult(zrkey({"run", "-"}, "print(require('./lib/near'))"), "near\n");
}

TEST_F(ScriptModulesTest, ModuleRunsOnceUnderAllItsNames) {
    writeFile("lib/once.js", "print('runs');");
    expectOutput(
        "var first = require('./lib/once');\n"
        "print(first === require('lib/once.js'),\n"
        "      first === require('./lib/../lib/./once'));",
        "runs\ntrue true\n");
}

TEST_F(ScriptModulesTest, CycleGetsTheUnfinishedExports) {
    writeFile("one.js", "exports.early = 1; exports.two = require('./two'); exports.late = 2;");
    writeFile("two.js", "var one = require('./one'); exports.seen = JSON.stringify(one);");
    expectOutput("print(JSON.stringify(require('./one')));",
                 "{\"early\":1,\"two\":{\"seen\":\"{\\\"early\\\":1}\"},\"late\":2}\n");
    writeFile("self.js", "exports.isSame = require('./self') === exports;");
    expectOutput("print(require('./self').isSame);", "true\n");
}

TEST_F(ScriptModulesTest, MarkAndInterpreterLineAreSkipped) {
    writeFile("marked.js",
              "\xEF\xBB\xBF#!/usr/bin/env zrkey\nmodule.exports = new Error('x').lineNumber;");
    expectOutput("print(require('./marked'));", "2\n");
}

TEST_F(ScriptModulesTest, ErrorNamesTheModule) {
    writeFile("lib/fails.js", "exports.fail = function fail() {\n    throw new Error('no');\n};");
    expectErrors("var fails = require('./lib/fails');\nfails.fail();",
                 "lib/fails.js:2: no\n    at fail (lib/fails.js:2)\n    at script.js:2\n");
}

TEST_F(ScriptModulesTest, SyntaxErrorNamesTheModule) {
    writeFile("lib/broken.js", "var a;\nvar b = () => 1;\n");
    const CommandResult result = runText("\nrequire('./lib/broken');");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(0u, result.errors.find("lib/broken.js:2: SyntaxError: ")) << result.errors;
    EXPECT_NE(std::string::npos,
              result.errors.find("\n    scripts are ECMAScript 5.1 with parts of later editions; "
                                 "line 2 has an arrow function\n    at script.js:2\n"))
        << result.errors;
}

TEST_F(ScriptModulesTest, BraceTooManyIsASyntaxError) {
    writeFile("closed.js", "print('ran');\n}\nprint('ran too');");
    const CommandResult result = runText("require('./closed');");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_EQ(0u, result.errors.find("closed.js:3: SyntaxError: ")) << result.errors;
}

TEST_F(ScriptModulesTest, EmptyFileIsAModule) {
    writeFile("empty.js", "");
    expectOutput("print(JSON.stringify(require('./empty')));", "{}\n");
}

TEST_F(ScriptModulesTest, ModuleThatFailedRunsAgain) {
    writeFile("flaky.js",
              "if (!first) { first = true; throw new Error('once'); }\nexports.ok = 1;");
    expectOutput(
        "first = false; try { require('./flaky'); } catch (error) { print(error); }\n"
        "print(require('./flaky').ok);",
        "Error: once\n1\n");
}

TEST_F(ScriptModulesTest, MissingModuleIsAnError) {
    expectErrors("require('./none');",
                 "script.js:1: require failed: none.js: No such file or directory\n");
    expectErrors("require('./lib');",
                 "script.js:1: require failed: lib.js: No such file or directory\n");
    expectErrors("require();", "script.js:1: TypeError: require: the path is not a text\n");
    expectErrors("require('a\\u0000b');",
                 "script.js:1: TypeError: require: the path contains a NUL\n");
}

TEST_F(ScriptModulesTest, ModulesThatRequireOneAnotherWithoutEndAreWithinTheStack) {
    writeFile("deep.js", "(function again() { require('./deep'); again(); })();");
    expectOutput("try { require('./deep'); } catch (error) { print(error.name); }", "RangeError\n");
}

TEST_F(ScriptModulesTest, EndlessModuleEndsAtTheTimeLimit) {
    writeFile("endless.js", "for (;;) { try { for (;;) {} } catch (error) {} }");
    const CommandResult result =
        runText("try { require('./endless'); } catch (error) {}", {"--time-limit", "0.2"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(std::string::npos, result.errors.find("RangeError: execution timeout\n"));
}

}  // namespace
}  // namespace zr::test
