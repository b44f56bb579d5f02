// Owners of the administrator's browser.json, and where it is. On Windows alone: on Linux the folder is
// fixed and its owners are tested in settings_rights_test.cpp.
#include <windows.h>

#include <aclapi.h>

#include "tests/host/configuration_folders.h"
#include "tests/host/web/web_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::SettingsScope;

class SettingsOwnerTest : public WebTest {
protected:
    SettingsOwnerTest() {
        web.places.mayUserOwnSystem = false;
        web.use();
    }

    /// The user of this process, which may be an administrator but is not the account of all of them.
    static void giveToUser(const fs::path& path) {
        HANDLE token = nullptr;
        ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
        unsigned char user[1000];
        DWORD size = sizeof user;
        const BOOL isRead = GetTokenInformation(token, TokenUser, user, size, &size);
        CloseHandle(token);
        ASSERT_TRUE(isRead);
        std::wstring name = path.wstring();
        ASSERT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
                  SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION,
                                        reinterpret_cast<TOKEN_USER*>(user)->User.Sid, nullptr,
                                        nullptr, nullptr));
    }
};

TEST_F(SettingsOwnerTest, SystemFileOfTheUserIsRefused) {
    write(systemFile(), R"({"allow": ["https://a.example"]})");
    giveToUser(systemFile());
    const std::string failure = failureOf([] { host::SitePolicy::read(); });
    EXPECT_NE(std::string::npos,
              failure.find("\": it belongs to a user who is not an administrator; "))
        << failure;
    write(userFile(), "{}");
    giveToUser(userFile());
    EXPECT_EQ("-", failureOf([] { host::readSettings(SettingsScope::kUser); }));
}

TEST_F(SettingsOwnerTest, SystemFolderThatAUserMadeIsNotUsed) {
    fs::create_directories(systemFile().parent_path());
    giveToUser(systemFile().parent_path());
    const std::string failure = failureOf([] { host::writeSettings(SettingsScope::kSystem, {}); });
    EXPECT_EQ(0u, failure.find("make the folder \"")) << failure;
    EXPECT_FALSE(fs::exists(systemFile()));
}

TEST_F(SettingsOwnerTest, EnvironmentDoesNotSayWhereTheSystemsFileIs) {
    host::replaceWebPlaces(std::nullopt);
    const fs::path before = host::webPlaces().systemConfiguration;
    EXPECT_TRUE(before.is_absolute()) << before;
    const ConfigurationFolders folders(folder.root());
    EXPECT_EQ(before, host::webPlaces().systemConfiguration);
}

}  // namespace
}  // namespace zr::test
