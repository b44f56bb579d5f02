// The examples of the script reference run as they are written there.
#include <sstream>

#include "tests/host/child_command.h"

namespace zr::test {
namespace {

/// The indented block of the reference that contains a text, without its indentation.
std::string exampleWith(const std::string& text) {
    std::istringstream page(readFile(ZRKEY_DOCS "/script-reference.md"));
    std::string line;
    std::string block;
    while (std::getline(page, line)) {
        if (line.starts_with("    ")) {
            block.append(line, 4).append("\n");
        } else if (block.find(text) != std::string::npos) {
            return block;
        } else {
            block.clear();
        }
    }
    ADD_FAILURE() << "no example contains " << text;
    return {};
}

class ScriptReferenceTest : public ChildCommandTest {
protected:
    static void expectResult(const CommandResult& result, int exitCode, const std::string& output,
                             const std::string& errors = {}) {
        EXPECT_EQ(exitCode, result.exitCode);
        EXPECT_EQ(output, result.output);
        EXPECT_EQ(errors, result.errors);
    }
};

TEST_F(ScriptReferenceTest, FilesAreCounted) {
    writeFile("count.js", exampleWith("usage: zrkey run count.js"));
    writeFile("three", "abc");
    expectResult(zrkey({"run", "count.js", "three"}), 0, "3 bytes\n");
    expectResult(zrkey({"run", "count.js"}), 2, "", "usage: zrkey run count.js FILE\n");
}

TEST_F(ScriptReferenceTest, LinesAreNumbered) {
    writeFile("number.js", exampleWith("readLine()"));
    expectResult(zrkey({"run", "number.js"}, "a\nb"), 0, "1: a\n2: b\n");
}

TEST_F(ScriptReferenceTest, NoteIsWritten) {
    const CommandResult result = runText(exampleWith("writeFile"));
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(0u, result.output.find("written for ")) << result.output;
    EXPECT_EQ("", result.errors);
}

TEST_F(ScriptReferenceTest, ModuleIsRequired) {
    writeFile("shout.js", exampleWith("exports.shout"));
    expectResult(runText(exampleWith("require(\"./shout\")")), 0, "READY!\n");
}

/// Prints the snippets that do not compile as expected, then whether globals are missing.
constexpr const char* kCheckSyntax = R"js(
var works = ["const a = 1; a = 2;", "var a, o = {a};", "var o = { f() { return 1; } };",
             "var k = 'a', o = { [k]: 1 };", "var a = 2 ** 3;", "var a = 0b11 + 0o17;",
             "var a = '\\u{1F511}';", "new.target;"];
var fails = ["let a = 1;", "var f = a => a;", "var a = `a`;", "class A {}", "var {a} = {};",
             "var [a] = [];", "function f(a = 1) {}", "f(...a);", "function f(...a) {}",
             "for (var a of b) {}", "function* g() {}", "async function f() {}",
             "import a from 'b';", "export var a;", "a?.b;", "a ?? b;", "try {} catch {}",
             "f(a,);", "1n;", "1_000;", "/a/s;", "/a/u;", "/a/y;", "/(?<a>b)/;", "/(?<=a)b/;"];
function compiles(code) {
    try {
        new Function(code);
        return true;
    } catch (error) {
        return !(error instanceof SyntaxError);
    }
}
works.forEach(function (code) { if (!compiles(code)) { print("fails:", code); } });
fails.forEach(function (code) { if (compiles(code)) { print("works:", code); } });
print([typeof Uint8Array, typeof Proxy, typeof Reflect, typeof Symbol, typeof globalThis,
       typeof TextEncoder, typeof TextDecoder, typeof performance.now, typeof Object.assign,
       typeof Object.is, typeof Number.isInteger, typeof Math.trunc, typeof "".startsWith,
       typeof "".includes, typeof "".repeat].indexOf("undefined"));
print([typeof Map, typeof Set, typeof WeakMap, typeof Promise, typeof BigInt, typeof Array.from,
       typeof Object.entries, typeof Object.values, typeof [].find, typeof [].includes,
       typeof [].flat, typeof "".padStart, typeof "".trimEnd, typeof "".normalize,
       typeof setTimeout, typeof console].every(function (type) { return type === "undefined"; }));
)js";

TEST_F(ScriptReferenceTest, LanguageIsWhatTheTableSays) {
    expectResult(runText(kCheckSyntax), 0, "-1\ntrue\n");
}

}  // namespace
}  // namespace zr::test
