// Every command with an output that cannot be written: a full disk, a pipe that nobody reads. On Linux
// alone, where the shell and /dev/full are.
#include "tests/host/command_pages.h"
#include "tests/host/configuration_folders.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class FullOutputTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        m_configurations.emplace(std::filesystem::current_path());
        setEnvironment("ZRKEY_MODULE", ZR_INSTANT_MODULE);
        setEnvironment("ZRKEY_INSTANT_CERTIFICATES", "1");
        setEnvironment("TEST_PIN", "1234");
        writeFile("data.bin", "data");
        writeFile("script.js", "print(1);");
        m_pages = commandPages([](const Words& words) { return zrkey(words); });
    }
    void TearDown() override {
        setEnvironment("ZRKEY_MODULE", "");
        setEnvironment("ZRKEY_INSTANT_CERTIFICATES", "");
        m_configurations.reset();
        ChildCommandTest::TearDown();
    }

    /// A line of the shell that runs words without a terminal and leaves the exit code in code.txt.
    static std::string line(const Words& words, const std::string& redirection) {
        std::string text = "(setsid -w " ZRKEY_COMMAND;
        for (const std::string& word : words) {
            text.append(" '").append(word).append("'");
        }
        return text + " < /dev/null " + redirection + "; echo $? > code.txt)";
    }
    static CommandResult run(const std::string& line) {
        // What an earlier run made.
        std::filesystem::remove_all("user");
        std::filesystem::remove_all("home");
        CommandResult result = shell(line);
        result.exitCode = std::stoi(readFile("code.txt"));
        return result;
    }

    /// The words of commands that succeed and write something.
    std::vector<Words> writing() const {
        std::vector<Words> found;
        for (const CommandPage& page : m_pages) {
            // It goes on until somebody interrupts it.
            if (page.isGroup || page.name() == "watch") {
                continue;
            }
            const Words words = usualWords(page);
            const CommandResult result = run(line(words, ""));
            if (result.exitCode == 0 && !result.output.empty()) {
                found.push_back(words);
            }
        }
        EXPECT_GE(found.size(), 14u);
        return found;
    }
    static void expectFailure(const CommandResult& result, const std::string& reason) {
        EXPECT_EQ(1, result.exitCode);
        EXPECT_NE(std::string::npos,
                  result.errors.find("cannot write to standard output: " + reason))
            << result.errors;
        EXPECT_EQ(result.errors.size() - 1, result.errors.find('\n')) << result.errors;
    }

    std::vector<CommandPage> m_pages;

private:
    std::optional<ConfigurationFolders> m_configurations;
};

TEST_F(FullOutputTest, FullDiskIsAFailureOfEveryCommand) {
    for (const Words& words : writing()) {
        const std::string text = line(words, "> /dev/full");
        SCOPED_TRACE(text);
        expectFailure(run(text), "No space left on device");
    }
}

TEST_F(FullOutputTest, PipeThatNobodyReadsIsAFailureOfEveryCommand) {
    for (const Words& words : writing()) {
        // The reader of the pipe is gone before the command starts.
        const std::string text = "(sleep 0.1; " + line(words, "") +
                                 ") | true; sleep 0.1; "
                                 "while [ ! -s code.txt ]; do sleep 0.1; done";
        SCOPED_TRACE(text);
        std::filesystem::remove("code.txt");
        expectFailure(run("(" + text + ")"), "Broken pipe");
    }
}

TEST_F(FullOutputTest, FullDiskIsAFailureOfEveryHelpPage) {
    for (const CommandPage& page : m_pages) {
        const std::string text = line(joined(page.path, {"--help"}), "> /dev/full");
        SCOPED_TRACE(text);
        expectFailure(run(text), "No space left on device");
    }
    expectFailure(run(line({"--version"}, "> /dev/full")), "No space left on device");
    expectFailure(run(line({"--help"}, "> /dev/full")), "No space left on device");
}

TEST_F(FullOutputTest, FullOutputFileIsAFailureOfEveryCommandThatHasOne) {
    int count = 0;
    for (const CommandPage& page : m_pages) {
        if (!page.isGroup && page.has("--output")) {
            // The module of this test has no certificate that could check a signature.
            if (run(line(usualWords(page, {"--output", "out.bin"}), "")).exitCode != 0) {
                continue;
            }
            const std::string text = line(usualWords(page, {"--output", "/dev/full"}), "");
            SCOPED_TRACE(text);
            const CommandResult result = run(text);
            EXPECT_EQ(1, result.exitCode);
            EXPECT_NE(std::string::npos,
                      result.errors.find("cannot write to \"/dev/full\": No space left on device"))
                << result.errors;
            ++count;
        }
    }
    EXPECT_GE(count, 3);
}

TEST_F(FullOutputTest, FullErrorOutputChangesNoExitCode) {
    EXPECT_EQ(2, run(line({"no-such-command"}, "2> /dev/full")).exitCode);
    EXPECT_EQ(1, run(line({"digest", "-i", "missing"}, "2> /dev/full")).exitCode);
    EXPECT_EQ(0, run(line({"list"}, "2> /dev/full")).exitCode);
}

}  // namespace
}  // namespace zr::test
