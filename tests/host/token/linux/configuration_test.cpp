// Folders of the configuration as the environment names them. On Linux only: on Windows they have
// other variables, and its folder for temporary files cannot be made unusable by a variable alone.
#include "host/system/system.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using ConfigurationFolderTest = CommandTest;

TEST_F(ConfigurationFolderTest, UserFolderIsInTheHomeUnlessAFullPathIsSet) {
    setEnvironment("HOME", "/home/me");
    setEnvironment("XDG_CONFIG_HOME", "/home/me/settings");
    EXPECT_EQ("/home/me/settings", host::userConfigurationFolder());
    for (const char* other : {"", "settings"}) {
        setEnvironment("XDG_CONFIG_HOME", other);
        EXPECT_EQ("/home/me/.config", host::userConfigurationFolder());
    }
    setEnvironment("HOME", "me");
    EXPECT_EQ("", host::userConfigurationFolder());
    EXPECT_EQ("/etc", host::systemConfigurationFolder());
}

TEST_F(ConfigurationFolderTest, MissingFolderForTemporaryFilesIsNamed) {
    fs::remove("config.xml");
    ConfigurationFolders::setTemporary((folder.root() / "missing").string());
    expectFailure({"list"}, 3,
                  "copy the configuration for the library: No such file or directory; check the "
                  "folder for temporary files, or put config.xml into the working folder");
    // A relative path would name another folder after each change of the current one.
    ConfigurationFolders::setTemporary("missing");
    EXPECT_EQ(0, zrkey({"list"}).exitCode);
}

TEST_F(ConfigurationFolderTest, FolderForTemporaryFilesWithABackslashIsRefused) {
    fs::remove("config.xml");
    const fs::path strange = folder.root() / "a\\b";
    fs::create_directory(strange);
    ConfigurationFolders::setTemporary(strange.string());
    const CommandResult result = zrkey({"list"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_NE(std::string::npos,
              result.errors.find("contains \"\\\", which the library reads as a separator; choose "
                                 "another one, or put config.xml into the working folder"))
        << result.errors;
    EXPECT_TRUE(fs::is_empty(strange));
}

}  // namespace
}  // namespace zr::test
