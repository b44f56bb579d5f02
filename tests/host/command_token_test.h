// A fixture for zrkey on a real token: its module in ZRKEY_MODULE, its PINs in variables and files,
// a configuration in the current directory.
#pragma once

#include <optional>

#include "tests/host/child_command.h"
#include "tests/host/configuration_folders.h"
#include "tests/support/fixtures/soft_token.h"
#include "tests/support/temp_dir.h"

namespace zr::test {

class CommandTokenTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        m_configurations.emplace(std::filesystem::current_path());
        writeFile("config.xml", "<driver><algo>SHA1WithRSA</algo><digest>MD5</digest></driver>");
        setEnvironment("ZRKEY_MODULE", fromEnvironment("ZRKEY_TEST_MODULE"));
        setEnvironment("TEST_PIN", "1234");
        setEnvironment("TEST_WRONG_PIN", "97531");
        setEnvironment("TEST_SO_PIN", "87654321");
    }

    /// With the user's PIN.
    static CommandResult zrkeyLoggedIn(std::vector<std::string> words,
                                       const std::string& input = {}) {
        words.insert(words.end(), {"--pin", "env:TEST_PIN"});
        return zrkey(words, input);
    }

private:
    std::optional<ConfigurationFolders> m_configurations;
};

inline void expectOutput(const CommandResult& result, const std::string& output) {
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(output, result.output);
    EXPECT_EQ("", result.errors);
}

/// A failure is one line on standard error that contains a text, and nothing on standard output.
inline void expectFailure(const CommandResult& result, int exitCode, const std::string& part) {
    EXPECT_EQ(exitCode, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_NE(std::string::npos, result.errors.find(part)) << result.errors;
    EXPECT_EQ(0u, result.errors.find("zrkey: ")) << result.errors;
    EXPECT_EQ(result.errors.size() - 1, result.errors.find('\n')) << result.errors;
}

}  // namespace zr::test
