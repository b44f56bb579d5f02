// A module whose server is dead: it writes to a pipe that nobody reads. On Linux only, where this
// ends a process that does not ignore the signal.
#include <signal.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "tests/host/child_command.h"
#include "tests/host/configuration_folders.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class DeadServerTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        m_configurations.emplace(std::filesystem::current_path());
        // A child inherits a signal that is ignored; the command itself must ignore this one.
        m_before = signal(SIGPIPE, SIG_DFL);
        ASSERT_EQ(0, pipe(m_server));
        setEnvironment("ZRKEY_INSTANT_SERVER", std::to_string(m_server[1]));
        setEnvironment("ZRKEY_MODULE", ZR_INSTANT_MODULE);
        setEnvironment("TEST_PIN", "1234");
    }
    void TearDown() override {
        killServer();
        close(m_server[1]);
        signal(SIGPIPE, m_before);
        for (const char* name : {"ZRKEY_INSTANT_SERVER", "ZRKEY_MODULE", "TEST_PIN"}) {
            setEnvironment(name, "");
        }
        m_configurations.reset();
        ChildCommandTest::TearDown();
    }

    void killServer() { close(std::exchange(m_server[0], -1)); }

    static CommandResult login() { return zrkey({"login", "--pin", "env:TEST_PIN"}); }

private:
    std::optional<ConfigurationFolders> m_configurations;
    int m_server[2] = {-1, -1};
    void (*m_before)(int) = SIG_DFL;
};

TEST_F(DeadServerTest, ModuleThatReachesItsServerLogsIn) {
    const CommandResult result = login();
    EXPECT_EQ(0, result.exitCode) << result.errors;
}

TEST_F(DeadServerTest, CommandReportsTheFailureOfTheModule) {
    killServer();
    const CommandResult result = login();
    EXPECT_EQ(5, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_EQ(
        "zrkey: cannot log in to \"Instant\" as user: the PIN is wrong, or the token could not "
        "check it; retries are limited, so check the PIN before you try again\n",
        result.errors);
}

TEST_F(DeadServerTest, ScriptGoesOnAfterTheFailureOfTheModule) {
    killServer();
    std::filesystem::copy_file(ZR_INSTANT_MODULE, "module.so");
    writeFile("config.xml", "<driver><algo>RSA</algo><digest>MD5</digest></driver>");
    const CommandResult result = runText(
        "var provider = new TokenProvider();\n"
        "provider.Load('module.so');\n"
        "try { provider.OpenKey(0).VerifyPIN('1234', 0); }\n"
        "catch (error) { print(error.message); }\n");
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ("VerifyPIN failed: E_FAIL (0x80004005)\n", result.output);
}

}  // namespace
}  // namespace zr::test
