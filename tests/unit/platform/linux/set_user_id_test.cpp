// The environment of a set-user-ID program. Windows has no such programs.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr uid_t kSomebodyElse = 65534;

class SetUserIdTest : public testing::Test {
protected:
    SetUserIdTest() {
        fs::copy_file(ZR_SET_USER_ID_PROGRAM, m_program, fs::copy_options::overwrite_existing);
    }
    ~SetUserIdTest() override { fs::remove(m_program); }

    /// The length of "/home" as the program reads it from its environment.
    int readLength() {
        const int status = std::system(("ZRKEY_HOME_X64=/home " + m_program.string()).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const fs::path m_program = fs::current_path() / "set_user_id_copy";
};

TEST_F(SetUserIdTest, GetEnvironmentVariableInAPlainProgramReturnsTheValue) {
    EXPECT_EQ(5, readLength());
}

TEST_F(SetUserIdTest, GetEnvironmentVariableInASetUserIdProgramReturnsNothing) {
    if (chown(m_program.c_str(), kSomebodyElse, kSomebodyElse) != 0) {
        GTEST_SKIP() << "only root can give a program to another user";
    }
    fs::permissions(m_program, fs::perms::set_uid | fs::perms::owner_all | fs::perms::others_exec |
                                   fs::perms::others_read | fs::perms::group_read |
                                   fs::perms::group_exec);
    EXPECT_EQ(0, readLength());
}

}  // namespace
