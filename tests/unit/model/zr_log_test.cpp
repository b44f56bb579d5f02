// ZRLog: its limits, and when a provider logs.
#include "model/zr_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "pkcs11/provider_pkcs11.h"
#include "platform/kernel.h"
#include "tests/support/console_capture.h"
#include "tests/support/log_file.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

const std::string kStamp = "[00:00:00.000] ";

class ZRLogTest : public testing::Test {
protected:
    /// Expects that a provider in a directory creates the folder "log" and no file.
    void expectNoLogIn(const std::filesystem::path& directory) {
        const ConsoleCapture quiet;
        auto* provider = new TokenProvider_pkcs11();
        provider->AddRef();
        std::filesystem::current_path(directory);
        folder.enableLog();
        EXPECT_EQ(0, provider->EnableLog());
        EXPECT_TRUE(std::filesystem::is_directory(folder.home() / "log"));
        EXPECT_TRUE(std::filesystem::is_empty(folder.home() / "log"));
        provider->Release();
    }

    TempDir folder;
    ZRLog log;
};

TEST_F(ZRLogTest, LogOfALongMessageCutsItAt81919Bytes) {
    const std::string path = (folder.work() / "cut.log").string();
    EXPECT_EQ(0, log.SetFilePath(path.c_str()));
    log.Log(0, "%s", std::string(81919, 'x').c_str());
    EXPECT_EQ(kStamp.size() + 81919, readText(path).size());
    log.Log(0, "%s", std::string(81920, 'x').c_str());
    EXPECT_EQ(2 * (kStamp.size() + 81919), readText(path).size());
}

TEST_F(ZRLogTest, SetFilePathOver499BytesTurnsLoggingOff) {
    // Any number of "./" leads to the same file.
    const auto pathOf = [](std::size_t bytes) {
        std::string path = bytes % 2 == 0 ? "yy" : "y";
        while (path.size() < bytes) {
            path.insert(0, "./");
        }
        return path;
    };
    log.SetFilePath(pathOf(500).c_str());
    log.Log(0, "text\n");
    EXPECT_FALSE(std::ifstream(folder.work() / "yy").is_open());
    log.SetFilePath(pathOf(499).c_str());
    EXPECT_EQ("", readText(folder.work() / "y"));
    log.Log(0, "text\n");
    EXPECT_EQ(kStamp.size() + 5, readText(folder.work() / "y").size());
}

TEST_F(ZRLogTest, EnableLogReturnsWhetherLoggingIsOn) {
    const ConsoleCapture quiet;
    auto* provider = new TokenProvider_pkcs11();
    provider->AddRef();
    EXPECT_EQ(0, provider->EnableLog());
    folder.enableLog();
    EXPECT_EQ(1, provider->EnableLog());
    provider->Release();
}

TEST_F(ZRLogTest, EnableLogWithAnEmptyLogHomeLeavesLoggingOff) {
    const ConsoleCapture quiet;
    setEmptyEnvironment("ZRKEY_HOME_X64");
    ASSERT_EQ(1u, GetEnvironmentVariableA("ZRKEY_HOME_X64", nullptr, 0));  // it is set
    auto* provider = new TokenProvider_pkcs11();
    provider->AddRef();
    EXPECT_EQ(0, provider->EnableLog());
    EXPECT_TRUE(std::filesystem::is_empty(folder.work()));
    provider->Release();
}

TEST_F(ZRLogTest, SetFilePathOfAnExistingFileKeepsItsText) {
    folder.write("old.log", "old\n");
    log.SetFilePath("old.log");
    EXPECT_EQ("old\n", readText(folder.work() / "old.log"));
}

TEST_F(ZRLogTest, LogAppendsToAnExistingFile) {
    folder.write("old.log", "old\n");
    log.SetFilePath("old.log");
    log.Log(0, "new\n");
    const std::string text = readText(folder.work() / "old.log");
    EXPECT_TRUE(text.starts_with("old\n[")) << text;
    EXPECT_TRUE(text.ends_with("] new\n")) << text;
}

TEST_F(ZRLogTest, EnableLogInTheRootCreatesOnlyTheLogFolder) {
    expectNoLogIn(folder.root().root_path());
}

TEST_F(ZRLogTest, EnableLogDirectlyBelowTheRootCreatesOnlyTheLogFolder) {
    expectNoLogIn(folder.root().root_path() / *folder.root().relative_path().begin());
}

TEST_F(ZRLogTest, LogIgnoresTheLevel) {
    const std::string path = (folder.work() / "level.log").string();
    log.SetFilePath(path.c_str());
    for (const int level : {0, 5, -1}) {
        log.Log(level, "%s %d\n", "text", 7);
        const std::string text = readText(path);
        EXPECT_EQ(kStamp.size() + 7, text.size()) << level;
        EXPECT_EQ("text 7\n", text.substr(std::min(kStamp.size(), text.size()))) << level;
        std::filesystem::remove(path);
    }
}

TEST_F(ZRLogTest, SetFilePathWithALongPathTurnsLoggingOffAgain) {
    const std::string path = (folder.work() / "off.log").string();
    log.SetFilePath(path.c_str());
    EXPECT_EQ(0, log.SetFilePath(std::string(500, 'x').c_str()));
    log.Log(0, "text\n");
    EXPECT_EQ("", readText(path));
}

TEST_F(ZRLogTest, SetFilePathWithNullTurnsLoggingOff) {
    const std::string path = (folder.work() / "off.log").string();
    log.SetFilePath(path.c_str());
    EXPECT_TRUE(std::ifstream(path).is_open());
    log.SetFilePath(nullptr);
    log.Log(0, "text\n");
    EXPECT_EQ("", readText(path));
}

}  // namespace
}  // namespace zr::test
