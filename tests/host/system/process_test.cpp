// Programs that the command starts: their words, variables, streams and exit codes.
#include "host/system/process.h"

#include <chrono>
#include <thread>

#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace zr::host {
namespace {

using zr::test::readFile;
using Words = std::vector<std::string>;

class ProcessTest : public zr::test::ChildCommandTest {
protected:
    static Words zrkeyRun(const std::string& code, const Words& arguments = {}) {
        Words words = {std::filesystem::absolute(ZRKEY_COMMAND).make_preferred().string(), "run",
                       "-e", code};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return words;
    }
    static int wait(ChildProcess& child) {
        for (;;) {
            if (const std::optional<int> code = child.exitCode()) {
                return *code;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    /// Runs a program to its end.
    /// @return its standard output.
    static std::string run(ProcessStart start, int exitCode = 0) {
        std::error_code error;
        start.output = openNewForWriting("out.txt", error);
        std::optional<ChildProcess> child = ChildProcess::start(start, error);
        closeDescriptor(start.output);
        EXPECT_FALSE(error) << error.message();
        EXPECT_TRUE(child.has_value());
        EXPECT_EQ(exitCode, child ? wait(*child) : -1);
        std::string output = readFile("out.txt");
        std::filesystem::remove("out.txt");
        return output;
    }
};

TEST_F(ProcessTest, WordsArriveAsTheyAre) {
    const Words words = {"",       "a b",    "quote\"d", "back\\slash", "end\\",    "b\\\"q",
                         "\\\\\"", "%PATH%", "$HOME",    "*",           "caf\u00e9"};
    std::string expected;
    for (const std::string& word : words) {
        expected += "[" + word + "]";
    }
    EXPECT_EQ(expected + "\n", run({zrkeyRun("print('[' + arguments.join('][') + ']')", words)}));
}

TEST_F(ProcessTest, VariablesAreAddedAndReplaced) {
    zr::test::setEnvironment("TEST_KEPT", "kept");
    zr::test::setEnvironment("TEST_REPLACED", "before");
    EXPECT_EQ("kept after \u20ac\nline\n",
              run({zrkeyRun("print(environment.TEST_KEPT, environment.TEST_REPLACED, "
                            "environment.TEST_NEW)"),
                   {{"TEST_REPLACED", "after"}, {"TEST_NEW", "\u20ac\nline"}}}));
}

TEST_F(ProcessTest, ExitCodeIsReturnedOnceAndAgain) {
    run({zrkeyRun("exit(7)")}, 7);
    std::error_code error;
    std::optional<ChildProcess> child = ChildProcess::start({zrkeyRun("exit(9)")}, error);
    ASSERT_TRUE(child.has_value());
    EXPECT_EQ(9, wait(*child));
    EXPECT_EQ(9, child->exitCode());
}

TEST_F(ProcessTest, RunningProgramHasNoExitCode) {
    std::error_code error;
    std::optional<ChildProcess> child = ChildProcess::start({zrkeyRun("sleep(1)")}, error);
    ASSERT_TRUE(child.has_value());
    EXPECT_EQ(std::nullopt, child->exitCode());
    ChildProcess moved = std::move(*child);
    EXPECT_EQ(0, wait(moved));
}

TEST_F(ProcessTest, ProgramIsFoundInPath) {
    const std::string before = environmentVariable("PATH").value_or("");
    const std::filesystem::path program = std::filesystem::absolute(ZRKEY_COMMAND);
    zr::test::setEnvironment("PATH", program.parent_path().make_preferred().string());
    Words words = zrkeyRun("print('found')");
    words.front() = program.filename().string();
    EXPECT_EQ("found\n", run({words}));
    zr::test::setEnvironment("PATH", before);
}

TEST_F(ProcessTest, MissingProgramIsAnError) {
    for (const char* name : {"no-such-program", "./no-such-program"}) {
        std::error_code error;
        EXPECT_FALSE(ChildProcess::start({{name}}, error).has_value());
        EXPECT_EQ(std::errc::no_such_file_or_directory, error) << error.message();
    }
}

}  // namespace
}  // namespace zr::host
