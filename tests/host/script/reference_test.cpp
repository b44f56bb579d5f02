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

}  // namespace
}  // namespace zr::test
