// The globals printError, environment, sleep and readLine.
#include <chrono>

#include "host/output/console.h"
#include "host/script/engine.h"
#include "tests/host/child_command.h"
#include "tests/host/redirection.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class ScriptGlobalsTest : public ChildCommandTest {
protected:
    void TearDown() override {
        setEnvironment("ZRKEY_TEST_VARIABLE", "");
        ChildCommandTest::TearDown();
    }
    static void expectOutput(const std::string& text, const std::string& output,
                             const std::string& input = {}) {
        const CommandResult result = zrkey({"run", "-e", text}, input);
        EXPECT_EQ(0, result.exitCode) << text;
        EXPECT_EQ(output, result.output) << text;
        EXPECT_EQ("", result.errors) << text;
    }
    static void expectError(const std::string& text, const std::string& message,
                            const std::vector<std::string>& options = {}) {
        const CommandResult result = runText(text, options);
        EXPECT_EQ(1, result.exitCode) << text;
        EXPECT_EQ("script.js:1: " + message + "\n", result.errors) << text;
    }
    /// What a script prints when a stream of the process cannot be used.
    static std::string printedWith(int stream, int descriptor, const std::string& text) {
        {
            std::error_code error;
            const Redirection output(host::kStandardOutput,
                                     host::openForWriting("printed.txt", error));
            const Redirection other(stream, descriptor);
            host::Console console(host::Diagnostics::kDropped);
            EXPECT_EQ(0, host::ScriptEngine(console).run({"script.js", text}));
        }
        return readFile("printed.txt");
    }
};

TEST_F(ScriptGlobalsTest, PrintErrorWritesALineToStandardError) {
    const CommandResult result = runText("printError('a', 2.5, [1, 2]); print('b'); printError();");
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("b\n", result.output);
    EXPECT_EQ("a 2.5 1,2\n\n", result.errors);
}

TEST_F(ScriptGlobalsTest, PrintErrorThrowsWhenStandardErrorCannotBeWritten) {
    writeFile("sealed.txt", "");
    std::error_code error;
    EXPECT_EQ("printError failed: cannot write to standard error: Bad file descriptor\n",
              printedWith(host::kStandardError, host::openForReading("sealed.txt", error),
                          "try { printError('x'); } catch (error) { print(error.message); }"));
}

TEST_F(ScriptGlobalsTest, EnvironmentHoldsTheVariables) {
    setEnvironment("ZRKEY_TEST_VARIABLE", "one=1");
    expectOutput(
        "print(environment.ZRKEY_TEST_VARIABLE, environment.ZRKEY_NO_VARIABLE,"
        " environment.toString)",
        "one=1 undefined undefined\n");
    expectOutput("environment.ZRKEY_TEST_VARIABLE = 2; print(environment.ZRKEY_TEST_VARIABLE)",
                 "2\n");
    expectOutput("environment = 3; print(environment)", "3\n");
}

TEST_F(ScriptGlobalsTest, SleepTakesItsTime) {
    expectOutput(
        "var start = Date.now(); sleep(0.3); sleep(0);"
        " var time = Date.now() - start; print(time > 250 || time)",
        "true\n");
}

TEST_F(ScriptGlobalsTest, SleepEndsWithTheTime) {
    const auto start = std::chrono::steady_clock::now();
    expectError("try { sleep(1000); } catch (error) { print('caught'); }",
                "RangeError: execution timeout", {"--time-limit", "0.2"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

TEST_F(ScriptGlobalsTest, OtherTimesToSleepAreAnError) {
    for (const char* time : {"", "-1", "NaN", "Infinity", "1e7", "'1'"}) {
        expectError(std::string("sleep(") + time + ");",
                    "RangeError: sleep: the time is not a number from 0 to 1000000");
    }
}

constexpr const char* kReadAll =
    "var line; while ((line = readLine()) !== null) { print(JSON.stringify(line)); }"
    " print(readLine())";

TEST_F(ScriptGlobalsTest, ReadLineReturnsLinesWithoutTheirEnd) {
    expectOutput(kReadAll, "\"one\"\n\"two\"\n\"\"\n\"three\\r\"\nnull\n", "one\ntwo\r\n\nthree\r");
    expectOutput(kReadAll, "null\n");
    expectOutput(kReadAll, "\"\"\nnull\n", "\n");
}

TEST_F(ScriptGlobalsTest, ReadLineReturnsText) {
    expectOutput("print(readLine() === 'a\\ufffdb\\ud83d\\udd11\\u0000c')", "true\n",
                 std::string("a\xff"
                             "b\U0001F511\0c\n",
                             9));
}

TEST_F(ScriptGlobalsTest, ReadLineReturnsLongLines) {
    const std::string line(200000, 'x');
    expectOutput("print(readLine().length, readLine().length, readLine())", "200000 200000 null\n",
                 line + '\n' + line + '\n');
}

TEST_F(ScriptGlobalsTest, ReadLineKeepsToTheMemoryLimit) {
    for (const char* byte : {"x", "\xff"}) {
        std::string input;
        for (int i = 0; i < 6 << 20; ++i) {
            input += byte;
        }
        const CommandResult result =
            zrkey({"run", "--memory-limit", "8", "-e", "readLine()"}, input);
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ("command line:1: alloc failed\n", result.errors);
    }
}

TEST_F(ScriptGlobalsTest, ReadLineIsRefusedWhenTheScriptCameFromStandardInput) {
    const CommandResult result = zrkey({"run", "-"}, "print(1);\nreadLine();\n");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("1\n", result.output);
    EXPECT_EQ("standard input:2: readLine failed: standard input contained the script\n",
              result.errors);
}

TEST_F(ScriptGlobalsTest, ReadLineThrowsWhenStandardInputCannotBeRead) {
    std::error_code error;
    EXPECT_EQ("readLine failed: Bad file descriptor\n",
              printedWith(host::kStandardInput, host::openForWriting("sealed.txt", error),
                          "try { readLine(); } catch (error) { print(error.message); }"));
}

}  // namespace
}  // namespace zr::test
