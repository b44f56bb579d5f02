// Starts the zrkey command as a child process and captures its streams.
#include "tests/host/child_command.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace zr::test {
namespace {

/// The two command processors handle quotes and exit codes differently.
constexpr bool kDosShell = fs::path::preferred_separator != '/';

/// How often the command processor is started until it runs.
constexpr int kMostStarts = 3;

std::string inQuotes(const std::string& word) {
    return '"' + word + '"';
}

int exitCodeOf(int status) {
    if (kDosShell) {
        return status;
    }
    const int signal = status & 0x7F;
    return signal != 0 ? 128 + signal : (status >> 8) & 0xFF;
}

}  // namespace

void ChildCommandTest::SetUp() {
    m_before = fs::current_path();
    const testing::TestInfo& info = *testing::UnitTest::GetInstance()->current_test_info();
    const fs::path folder = fs::path(ZRKEY_WORK_FOLDER) / info.test_suite_name() / info.name();
    fs::remove_all(folder);
    fs::create_directories(folder);
    fs::current_path(folder);
}

void ChildCommandTest::TearDown() {
    fs::current_path(m_before);
}

CommandResult ChildCommandTest::zrkey(const std::vector<std::string>& words,
                                      const std::string& input) {
    writeFile("input.txt", input);
    std::string line = inQuotes(fs::absolute(ZRKEY_COMMAND).make_preferred().string());
    for (const std::string& word : words) {
        line += ' ' + inQuotes(word);
    }
    return shell(line + " < input.txt");
}

CommandResult ChildCommandTest::shell(std::string line) {
    line += " > output.txt 2> errors.txt";
    if (kDosShell) {
        line = inQuotes(line);
    }
    fs::remove("output.txt");
    fs::remove("errors.txt");
    CommandResult result;
    int starts = 0;
    do {
        result.exitCode = exitCodeOf(std::system(line.c_str()));
        // Wine on a busy machine does not always start the command processor, which makes this file
        // before it runs the command.
    } while (!fs::exists("output.txt") && ++starts < kMostStarts);
    result.output = readFile("output.txt");
    result.errors = readFile("errors.txt");
    return result;
}

CommandResult ChildCommandTest::runScript(const std::string& name,
                                          const std::vector<std::string>& arguments,
                                          const std::vector<std::string>& options) {
    std::vector<std::string> words = {"run"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(scriptPath(name));
    words.insert(words.end(), arguments.begin(), arguments.end());
    return zrkey(words);
}

CommandResult ChildCommandTest::runText(const std::string& text,
                                        const std::vector<std::string>& options) {
    writeFile("script.js", text);
    std::vector<std::string> words = {"run"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back("script.js");
    return zrkey(words);
}

std::string ChildCommandTest::scriptPath(const std::string& name) {
    return (fs::path(ZRKEY_SCRIPTS) / name).make_preferred().string();
}

std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << path;
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const fs::path& path, const std::string& content) {
    std::ofstream stream(path, std::ios::binary);
    stream << content;
    EXPECT_TRUE(stream.flush().good()) << path;
}

}  // namespace zr::test
