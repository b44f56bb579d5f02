// A module on another drive than the current directory. Only Windows has drives.
#include <filesystem>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

namespace fs = std::filesystem;

/// The current directory is the system's temporary folder.
class ElsewhereTest : public testing::Test {
protected:
    ElsewhereTest() { fs::current_path(fs::temp_directory_path()); }
    ~ElsewhereTest() override { fs::current_path(m_previous); }

private:
    fs::path m_previous = fs::current_path();
};

class OtherDriveTest : public ElsewhereTest {
protected:
    OtherDriveTest() { folder.writeConfig(); }

    TempDir folder;
    Recording module;
    std::string file = fs::path(module.file()).generic_string();
    ComRef<ITokenProvider> provider = makeProvider();
};

TEST_F(OtherDriveTest, LoadFromAnotherDriveSucceeds) {
    ASSERT_NE(fs::current_path().root_name(), fs::path(file).root_name());
    EXPECT_HR(S_OK, provider->Load(Text(aboveTheRoot(file))));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

TEST_F(OtherDriveTest, LoadOfADevicePathSucceeds) {
    EXPECT_HR(S_OK, provider->Load(Text(aboveTheRoot("//?/" + file))));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
