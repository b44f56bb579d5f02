// A folder that others own or can write is refused, and links in it are not followed. On Linux only,
// where a test can make such folders and links.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "host/browser/audit_log.h"
#include "host/browser/state_file.h"
#include "tests/host/browser/state_test.h"
#include "tests/support/console_capture.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class StateFolderModesTest : public StateTest {
protected:
    ~StateFolderModesTest() override { setEnvironment("XDG_STATE_HOME", ""); }
};

TEST_F(StateFolderModesTest, FolderIsForItsUserAlone) {
    setEnvironment("XDG_STATE_HOME", temp.work() / "outer" / "base");
    const mode_t before = umask(0);
    const fs::path made = host::browserStateFolder();
    umask(before);
    for (const fs::path& path :
         {made, made.parent_path(), temp.work() / "outer" / "base", temp.work() / "outer"}) {
        EXPECT_EQ(fs::perms::owner_all, fs::status(path).permissions()) << path;
    }
    host::AuditLog(made, "x").note("sign", "ok");
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write,
              fs::status(made / "audit.jsonl").permissions());
}

/// A module may fork a process that lives on when this one is killed.
TEST_F(StateFolderModesTest, ChildDoesNotKeepALock) {
    std::array<int, 2> end = {};
    ASSERT_EQ(0, pipe(end.data()));
    const pid_t process = fork();
    if (process == 0) {
        close(end[1]);
        std::error_code error;
        const auto file = host::StateFile::open(folder / "x", error);
        const bool isLocked = file && file->lock();
        if (fork() == 0) {
            char ignored = 0;
            _exit(::read(end[0], &ignored, 1) == 0 ? 0 : 1);
        }
        _exit(isLocked ? 0 : 1);
    }
    close(end[0]);
    int code = -1;
    EXPECT_EQ(process, waitpid(process, &code, 0));
    EXPECT_EQ(0, code);
    std::error_code error;
    const auto file = host::StateFile::open(folder / "x", error);
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->lock());
    close(end[1]);
}

TEST_F(StateFolderModesTest, FolderThatOthersCanWriteIsRefused) {
    setEnvironment("XDG_STATE_HOME", temp.work() / "base");
    const fs::path made = host::browserStateFolder();
    for (const fs::path& path : {made, made.parent_path()}) {
        for (const mode_t mode : {0770U, 0707U, 0777U, 01777U}) {
            chmod(path.c_str(), mode);
            EXPECT_EQ("it can be written by other users", folderFailure()) << path << mode;
        }
        chmod(path.c_str(), 0755);
        EXPECT_EQ("", folderFailure()) << path;
    }
}

TEST_F(StateFolderModesTest, FolderOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        // Folders of root are there for everybody else.
        EXPECT_EQ("belongs to another user", host::folderProblem("/usr"));
        return;
    }
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(0, chown(folder.c_str(), kNobody, static_cast<gid_t>(-1)));
    EXPECT_EQ("belongs to another user", host::folderProblem(folder));
}

TEST_F(StateFolderModesTest, LinkToAFolderIsRefused) {
    const fs::path link = temp.work() / "link";
    fs::create_directory_symlink(folder, link);
    EXPECT_EQ("is not a folder", host::folderProblem(link));
}

TEST_F(StateFolderModesTest, RelativeFolderOfTheEnvironmentCountsAsNotSet) {
    const std::string home = host::environmentVariable("HOME").value_or("");
    setEnvironment("XDG_STATE_HOME", "base");
    setEnvironment("HOME", temp.work());
    EXPECT_EQ(temp.work() / ".local/state/zrkey/browser", host::browserStateFolder());
    setEnvironment("HOME", home);
}

TEST_F(StateFolderModesTest, LinksInTheFolderAreNotFollowed) {
    temp.write("victim", "precious");
    for (const char* name : {"audit.jsonl", "audit.lock"}) {
        fs::remove(folder / name);
        fs::create_symlink(temp.work() / "victim", folder / name);
        ConsoleCapture capture;
        host::AuditLog(folder, "x").note("sign", "ok");
        EXPECT_NE("", capture.stop().error);
        fs::remove(folder / name);
    }
    for (const char* name : {"limits.lock", "connection-0", "cancelled"}) {
        fs::remove(folder / name);
        fs::create_symlink(temp.work() / "victim", folder / name);
        EXPECT_THROW(connected(), host::Failure) << name;
        fs::remove(folder / name);
    }
    std::ifstream victim(temp.work() / "victim");
    EXPECT_EQ("precious", std::string(std::istreambuf_iterator<char>(victim), {}));
}

TEST_F(StateFolderModesTest, NamedPipeInTheFolderDoesNotMakeItWait) {
    ASSERT_EQ(0, mkfifo((folder / "audit.jsonl").c_str(), 0600));
    ASSERT_EQ(0, mkfifo((folder / "prompt.lock").c_str(), 0600));
    ConsoleCapture capture;
    host::AuditLog(folder, "x").note("sign", "ok");
    EXPECT_NE("", capture.stop().error);
    EXPECT_THROW(limits().takePrompt(), host::Failure);
}

/// As on a full disk: files cannot grow.
class NoGrowth {
public:
    explicit NoGrowth(rlim_t most = 16384) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit none = {most, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~NoGrowth() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before = {};
};

TEST_F(StateFolderModesTest, WaitIsKeptOnAFullDisk) {
    const auto here = connected();
    ASSERT_TRUE(here);
    const NoGrowth full;
    here->noteCancelled();
    EXPECT_EQ(std::chrono::seconds(30), limits().waitAfterCancel());
}

TEST_F(StateFolderModesTest, FirstConnectionOnAFullDiskIsAFailure) {
    const NoGrowth full(0);
    EXPECT_THROW(connected(), host::Failure);
}

TEST_F(StateFolderModesTest, LineThatDoesNotFitLeavesNothingBehind) {
    const std::string most(16384 - 20, '\n');
    write("audit.jsonl", most);
    {
        const NoGrowth full;
        std::error_code error;
        const auto file = host::StateFile::open(folder / "audit.jsonl", error);
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->write(most.size(), std::string(100, 'x')));
    }
    EXPECT_EQ(most, read("audit.jsonl"));
}

TEST_F(StateFolderModesTest, ForkedProcessDoesNotKeepAPlace) {
    // A module may start a server that lives on.
    auto turn = limits().takePrompt();
    ASSERT_TRUE(turn);
    std::array<int, 2> ends = {};
    ASSERT_EQ(0, pipe2(ends.data(), O_CLOEXEC));
    const pid_t child = fork();
    if (child == 0) {
        close(ends[1]);
        char byte = 0;
        _exit(static_cast<int>(::read(ends[0], &byte, 1)));
    }
    turn.reset();
    EXPECT_TRUE(limits().takePrompt());
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
}  // namespace zr::test
