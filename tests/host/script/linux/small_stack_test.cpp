// Scripts on a small stack. On Linux only, where the shell can set its size; on Windows the program
// says itself how large it is.
#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

/// Some more than the command needs before it runs a script. Sanitizers make its frames larger.
#if defined(__SANITIZE_ADDRESS__)
constexpr const char* kSmallStack = "ulimit -s 512; ";
#else
constexpr const char* kSmallStack = "ulimit -s 256; ";
#endif

class SmallStackTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        setEnvironment("ZRKEY", ZRKEY_COMMAND);
    }
    void TearDown() override {
        setEnvironment("ZRKEY", "");
        ChildCommandTest::TearDown();
    }

    static CommandResult runOnSmallStack(const std::string& text) {
        writeFile("script.js", text);
        std::string line = "(";
        line.append(kSmallStack).append("\"$ZRKEY\" run script.js)");
        return shell(line);
    }
    static std::string repeat(const std::string& text) {
        std::string all;
        for (int i = 0; i < 2000; ++i) {
            all += text;
        }
        return all;
    }
};

TEST_F(SmallStackTest, PlainScriptRuns) {
    const CommandResult result = runOnSmallStack("print([[(function () { return 1; })()]]);");
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ("1\n", result.output);
}

TEST_F(SmallStackTest, DeeplyNestedSourceIsARangeError) {
    const std::pair<const char*, const char*> nestings[] = {{"[", "]"},
                                                            {"(", ")"},
                                                            {"(function () {", "})"},
                                                            {"function f() {", "}"},
                                                            {"{", "}"},
                                                            {"try {", "} finally {}"},
                                                            {"x = {a: ", "}"},
                                                            {"a[", "]"},
                                                            {"with ({}) {", "}"},
                                                            {"!", "1"},
                                                            {"new ", "a"},
                                                            {"a = ", "1"},
                                                            {"typeof ", "1"}};
    for (const auto& [begin, end] : nestings) {
        const CommandResult result = runOnSmallStack(repeat(begin) + repeat(end));
        EXPECT_EQ(1, result.exitCode) << begin;
        EXPECT_EQ("", result.output);
        EXPECT_EQ(0u, result.errors.find("script.js:1: RangeError: ")) << begin << result.errors;
    }
}

TEST_F(SmallStackTest, NestedSourceThatIsCompiledByADeepCallIsARangeError) {
    const CommandResult result = runOnSmallStack(
        "var source = new Array(200).join('[') + new Array(200).join(']'), name;\n"
        "(function again() {\n"
        "    try { again(); } catch (error) { name = error.name; }\n"
        "    try { eval(source); } catch (error) { name = error.name; }\n"
        "})();\nprint(name);");
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ("RangeError\n", result.output);
}

TEST_F(SmallStackTest, RecursionIntoTheLibraryIsARangeError) {
    const CommandResult result = runOnSmallStack(
        "var name;\n"
        "(function again() {\n"
        "    try { again(); } catch (error) { name = error.name; }\n"
        "    try { new TokenProvider().Load('none'); } catch (error) {}\n"
        "})();\nprint(name);");
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ("RangeError\n", result.output);
}

}  // namespace
}  // namespace zr::test
