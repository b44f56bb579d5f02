// Paths in a current directory that is longer than the working buffer or was removed. Linux only:
// Windows does not allow such a directory.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "runtime/path_utils.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

/// Creates and enters a directory whose path has the given length.
void enterDirectoryOf(std::size_t bytes) {
    std::size_t left = bytes - std::filesystem::current_path().string().size();
    while (left > 1) {
        // After a name of 100 bytes, the one byte that is left of 102 would be too few for another.
        const std::string name(std::min<std::size_t>(left - 1, left == 102 ? 99 : 100), 'd');
        std::filesystem::create_directory(name);
        std::filesystem::current_path(name);
        left -= name.size() + 1;
    }
    ASSERT_EQ(bytes, std::filesystem::current_path().string().size());
}

TEST(LongDirectoryTest, GetAbsolutionPathInADirectoryOver259BytesWritesNothing) {
    for (const std::size_t bytes : {std::size_t{259}, std::size_t{260}}) {
        const TempDir folder;
        enterDirectoryOf(bytes);
        const std::string inside = std::filesystem::current_path().string() + "/x";
        char path[1000] = "untouched";
        EXPECT_EQ(0, ZGetAbsolutionPath("./x", path, sizeof path));
        EXPECT_EQ(bytes == 259 ? inside : "untouched", path);
    }
}

TEST(LongDirectoryTest, GetCurrentPathReplacesABackslashInTheName) {
    const TempDir folder;
    std::filesystem::create_directory("a\\b");
    std::filesystem::current_path("a\\b");
    char path[1000] = "";
    EXPECT_LT(0, ZGetCurrentPath(path, sizeof path));
    EXPECT_TRUE(std::string(path).ends_with("/a/b")) << path;
}

TEST(LongDirectoryTest, GetAbsolutionPathInALongDirectoryResolvesOnlyPathsWithoutALeadingDot) {
    const TempDir folder;
    const std::string level(100, 'd');
    for (int i = 0; i < 4; ++i) {
        std::filesystem::create_directory(level);
        std::filesystem::current_path(level);
    }
    char path[1000] = "untouched";
    EXPECT_EQ(0, ZGetAbsolutionPath("./x", path, sizeof path));
    EXPECT_STREQ("untouched", path);
    EXPECT_EQ(0, ZGetAbsolutionPath("a/../x", path, sizeof path));
    EXPECT_STREQ("x", path);
}

TEST(LongDirectoryTest, PathsInARemovedDirectoryWriteNothing) {
    const TempDir folder;
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove(folder.work() / "gone");
    char path[1000] = "untouched";
    EXPECT_EQ(0, ZGetCurrentPath(path, sizeof path));
    EXPECT_STREQ("untouched", path);
    EXPECT_EQ(0, ZGetAbsolutionPath("./x", path, sizeof path));
    EXPECT_STREQ("untouched", path);
}

}  // namespace
}  // namespace zr::test
