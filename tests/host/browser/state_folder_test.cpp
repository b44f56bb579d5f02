// The folder for locks and the log: where it is, and when it is refused.
#include "host/browser/state_folder.h"

#include "tests/host/browser/state_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class StateFolderTest : public StateTest {
protected:
    StateFolderTest() {
        for (const char* name : {"XDG_STATE_HOME", "LOCALAPPDATA"}) {
            setEnvironment(name, host::toUtf8(temp.work() / "base"));
        }
    }
    ~StateFolderTest() override {
        for (const char* name : {"XDG_STATE_HOME", "LOCALAPPDATA"}) {
            setEnvironment(name, "");
        }
    }
};

TEST_F(StateFolderTest, FolderIsMadeAndFoundAgain) {
    const fs::path made = host::browserStateFolder();
    EXPECT_EQ(temp.work() / "base" / "zrkey" / "browser", made);
    EXPECT_TRUE(fs::is_directory(made));
    EXPECT_EQ("", host::folderProblem(made));
    EXPECT_EQ(made, host::browserStateFolder());
}

TEST_F(StateFolderTest, FileInPlaceOfTheFolderIsRefused) {
    for (const char* name : {"base/zrkey/browser", "base/zrkey"}) {
        fs::create_directories((temp.work() / name).parent_path());
        temp.write(name, "x");
        EXPECT_EQ("it is not a folder", folderFailure()) << name;
        fs::remove_all(temp.work() / "base");
    }
}

TEST_F(StateFolderTest, UnknownHomeIsRefused) {
    const std::string home = host::environmentVariable("HOME").value_or("");
    for (const char* name : {"XDG_STATE_HOME", "LOCALAPPDATA", "HOME"}) {
        setEnvironment(name, "");
    }
    EXPECT_EQ("the environment does not name the home folder", folderFailure());
    setEnvironment("HOME", home);
}

TEST_F(StateFolderTest, RelativeHomeIsRefused) {
    const std::string home = host::environmentVariable("HOME").value_or("");
    for (const char* name : {"XDG_STATE_HOME", "LOCALAPPDATA", "HOME"}) {
        setEnvironment(name, "relative");
    }
    EXPECT_EQ("the environment does not name the home folder", folderFailure());
    EXPECT_FALSE(fs::exists("relative"));
    setEnvironment("HOME", home);
}

TEST_F(StateFolderTest, FolderThatIsNotThereIsAProblem) {
    EXPECT_EQ("cannot be examined", host::folderProblem(temp.work() / "nowhere"));
}

}  // namespace
}  // namespace zr::test
