// The log file that somebody else made first: a link or a FIFO. Windows has neither in folders that
// all users can write to.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "model/zr_log.h"
#include "tests/support/log_file.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

namespace fs = std::filesystem;

class ZRLogFilesTest : public testing::Test {
protected:
    void log(const char* path) {
        logger.SetFilePath(path);
        logger.Log(0, "line\n");
    }

    TempDir folder;
    ZRLog logger;
};

TEST_F(ZRLogFilesTest, LinkIsNotFollowed) {
    folder.write("target.txt", "before");
    fs::create_symlink("target.txt", "link.log");
    log("link.log");
    EXPECT_EQ("before", readText("target.txt"));
}

TEST_F(ZRLogFilesTest, LinkToAMissingFileCreatesNothing) {
    fs::create_symlink("missing.txt", "link.log");
    log("link.log");
    EXPECT_FALSE(fs::exists("missing.txt"));
}

TEST_F(ZRLogFilesTest, LinkInsteadOfTheFileAfterSetFilePathIsNotFollowed) {
    logger.SetFilePath("a.log");
    folder.write("target.txt", "before");
    fs::remove("a.log");
    fs::create_symlink("target.txt", "a.log");
    logger.Log(0, "line\n");
    EXPECT_EQ("before", readText("target.txt"));
}

TEST_F(ZRLogFilesTest, FifoIsNotWritten) {
    ASSERT_EQ(0, mkfifo("fifo.log", 0600));
    const int reader = open("fifo.log", O_RDONLY | O_NONBLOCK);
    ASSERT_LE(0, reader);
    log("fifo.log");
    char byte = 0;
    EXPECT_EQ(0, read(reader, &byte, 1));
    close(reader);
}

}  // namespace
}  // namespace zr::test
