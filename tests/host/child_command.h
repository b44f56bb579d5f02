// Starts the zrkey command as a child process and captures its streams.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zr::test {

struct CommandResult {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// Runs each test in a fresh current directory.
class ChildCommandTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Runs zrkey. Words may contain blanks, but no quotes.
    /// @param input  becomes standard input.
    static CommandResult zrkey(const std::vector<std::string>& words,
                               const std::string& input = {});
    /// Runs a line of the shell.
    static CommandResult shell(std::string line);
    /// Runs tests/host/script/scripts/NAME, with options before it and arguments after it.
    static CommandResult runScript(const std::string& name,
                                   const std::vector<std::string>& arguments = {},
                                   const std::vector<std::string>& options = {});
    /// Writes a script into the current directory and runs it.
    static CommandResult runText(const std::string& text,
                                 const std::vector<std::string>& options = {});
    /// The path under which runScript names a script, as error messages show it.
    static std::string scriptPath(const std::string& name);

private:
    std::filesystem::path m_before;
};

/// Reads and writes the bytes of a file.
std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& content);

}  // namespace zr::test
