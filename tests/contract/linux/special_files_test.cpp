// A configuration that is a FIFO or a link, and the rights of log files. Windows has no FIFOs in
// folders, and its files have the rights of their folders.
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

namespace fs = std::filesystem;

using ConfigurationFileTest = ModuleTest;

TEST_F(ConfigurationFileTest, LoadWithAFifoAsConfigurationFailsAtOnce) {
    fs::remove("config.xml");
    ASSERT_EQ(0, mkfifo("config.xml", 0600));
    const ComRef<ITokenProvider> provider = makeProvider();
    EXPECT_HR(E_FAIL, provider->Load(Text(module.path())));
}

TEST_F(ConfigurationFileTest, LoadWithADeviceAsConfigurationFails) {
    fs::remove("config.xml");
    fs::create_symlink("/dev/zero", "config.xml");
    const ComRef<ITokenProvider> provider = makeProvider();
    EXPECT_HR(E_FAIL, provider->Load(Text(module.path())));
}

TEST_F(ConfigurationFileTest, LoadWithALinkToAConfigurationSucceeds) {
    fs::rename("config.xml", "real.xml");
    fs::create_symlink("real.xml", "config.xml");
    const ComRef<ITokenProvider> provider = makeProvider();
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
}

class LogFileRightsTest : public testing::Test {
protected:
    LogFileRightsTest() : m_mask(umask(0)) { folder.enableLog(); }
    ~LogFileRightsTest() override { umask(m_mask); }

    static fs::perms rightsOf(const fs::path& path) { return fs::status(path).permissions(); }

    TempDir folder;

private:
    mode_t m_mask;
};

TEST_F(LogFileRightsTest, NewLogFoldersAndFilesBelongToTheirOwnerAlone) {
    makeProvider();
    for (const char* made : {"log", "log/level", "log/level/work"}) {
        EXPECT_EQ(fs::perms::owner_all, rightsOf(folder.home() / made)) << made;
    }
    const auto files = findLogFiles(folder.home());
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, rightsOf(files[0]));
}

TEST_F(LogFileRightsTest, ExistingLogFoldersKeepTheirRights) {
    fs::create_directory(folder.home() / "log");
    fs::permissions(folder.home() / "log", fs::perms::all);
    makeProvider();
    EXPECT_EQ(fs::perms::all, rightsOf(folder.home() / "log"));
}

}  // namespace
}  // namespace zr::test
