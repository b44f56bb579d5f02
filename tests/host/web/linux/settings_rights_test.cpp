// Rights, owners and links of browser.json. On Linux only: Windows has neither these rights nor links
// that every user can make.
#include <sys/stat.h>
#include <unistd.h>

#include "host/web/settings_access.h"
#include "host/web/whole_file.h"
#include "tests/host/web/web_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::BrowserSettings;
using host::SettingsScope;

class SettingsRightsTest : public WebTest {
protected:
    static unsigned rightsOf(const fs::path& file) {
        return static_cast<unsigned>(fs::status(file).permissions());
    }
};

TEST_F(SettingsRightsTest, UsersFileIsPrivateAndSystemsFileIsNot) {
    const mode_t before = umask(077);
    host::writeSettings(SettingsScope::kUser, {});
    host::writeSettings(SettingsScope::kSystem, {});
    umask(before);
    EXPECT_EQ(0600u, rightsOf(userFile()));
    EXPECT_EQ(0644u, rightsOf(systemFile()));
}

TEST_F(SettingsRightsTest, FileThatEveryUserCanWriteIsRefused) {
    write(userFile(), "{}");
    fs::permissions(userFile(), fs::perms(0666));
    const std::string failure = failureOf([] { host::readSettings(SettingsScope::kUser); });
    EXPECT_NE(std::string::npos, failure.find("\": every user can write it; ")) << failure;
    fs::permissions(userFile(), fs::perms(0664));
    EXPECT_EQ("-", failureOf([] { host::readSettings(SettingsScope::kUser); }));
}

TEST_F(SettingsRightsTest, FileOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a file to another user";
    }
    write(systemFile(), "{}");
    constexpr uid_t kOther = 12345;
    ASSERT_EQ(0, chown(systemFile().c_str(), kOther, 0));
    const std::string failure = failureOf([] { host::readSettings(SettingsScope::kSystem); });
    EXPECT_NE(std::string::npos, failure.find("\": it belongs to another user; ")) << failure;
}

TEST_F(SettingsRightsTest, FileInAFolderThatEveryUserCanWriteIsRefused) {
    write(userFile(), "{}");
    fs::permissions(userFile().parent_path(), fs::perms(0777));
    std::string failure = failureOf([] { host::readSettings(SettingsScope::kUser); });
    EXPECT_NE(std::string::npos, failure.find("\": every user can write its folder; ")) << failure;
    fs::permissions(userFile().parent_path(), fs::perms(0775));
    EXPECT_EQ("-", failureOf([] { host::readSettings(SettingsScope::kUser); }));
    // So is one that a link leads to.
    const fs::path open = folder.root() / "open";
    write(open / "elsewhere.json", "{}");
    fs::permissions(open, fs::perms(0777));
    fs::remove(userFile());
    fs::create_symlink(open / "elsewhere.json", userFile());
    failure = failureOf([] { host::readSettings(SettingsScope::kUser); });
    EXPECT_NE(std::string::npos, failure.find("\": every user can write its folder; ")) << failure;
    fs::permissions(open, fs::perms(01777));
    EXPECT_EQ("-", failureOf([] { host::readSettings(SettingsScope::kUser); })) << "as /tmp is";
}

TEST_F(SettingsRightsTest, FileInTheFolderOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a folder to another user";
    }
    write(systemFile(), "{}");
    constexpr uid_t kOther = 12345;
    ASSERT_EQ(0, chown(systemFile().parent_path().c_str(), kOther, 0));
    const std::string failure = failureOf([] { host::readSettings(SettingsScope::kSystem); });
    EXPECT_NE(std::string::npos, failure.find("\": its folder belongs to another user; "))
        << failure;
}

TEST_F(SettingsRightsTest, NewFilesAndFoldersArePrivateFromTheBeginning) {
    const fs::path file = folder.root() / "new.json";
    const fs::path made = folder.root() / "new";
    bool isNew = false;
    const mode_t before = umask(0);
    EXPECT_FALSE(host::writeOwnFile(file, "{}"));
    EXPECT_FALSE(host::makeSettingsPath(made, isNew));
    EXPECT_FALSE(host::makeFolders(folder.root() / "a/b", host::FileReaders::kOwner));
    umask(before);
    EXPECT_TRUE(isNew);
    EXPECT_EQ(0600u, rightsOf(file));
    EXPECT_EQ("{}", readFile(file));
    for (const fs::path& path : {made, folder.root() / "a", folder.root() / "a/b"}) {
        EXPECT_EQ(0700u, rightsOf(path)) << path;
    }
    EXPECT_EQ(std::errc::file_exists, host::writeOwnFile(file, "other"));
    EXPECT_EQ("{}", readFile(file));
    EXPECT_FALSE(host::makeSettingsPath(made, isNew));
    EXPECT_FALSE(isNew);
    EXPECT_EQ(std::errc::file_exists, host::makeSettingsPath(file, isNew));
}

TEST_F(SettingsRightsTest, UnreadableFileIsReported) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root can read every file";
    }
    write(userFile(), "{}");
    fs::permissions(userFile(), fs::perms::none);
    const std::string failure = failureOf([] { host::readSettings(SettingsScope::kUser); });
    EXPECT_NE(std::string::npos, failure.find("Permission denied")) << failure;
}

TEST_F(SettingsRightsTest, PipeIsNotOpened) {
    fs::create_directories(userFile().parent_path());
    ASSERT_EQ(0, mkfifo(userFile().c_str(), 0600));
    const std::string failure = failureOf([] { host::readSettings(SettingsScope::kUser); });
    EXPECT_NE(std::string::npos, failure.find("\": it is not a regular file; ")) << failure;
}

TEST_F(SettingsRightsTest, LinkStaysAndItsFileIsReplaced) {
    const fs::path target = folder.root() / "elsewhere.json";
    writeFile(target, "{}");
    fs::create_directories(userFile().parent_path());
    fs::create_symlink(target, userFile());
    BrowserSettings settings;
    settings.callSeconds = 9;
    host::writeSettings(SettingsScope::kUser, settings);
    EXPECT_TRUE(fs::is_symlink(userFile()));
    EXPECT_EQ("{\n  \"callSeconds\": 9\n}\n", readFile(target));
}

}  // namespace
}  // namespace zr::test
