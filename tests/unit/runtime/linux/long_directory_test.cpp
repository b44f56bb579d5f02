// Paths in a current directory longer than the working buffer. Linux only: Windows has no such
// directory.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "runtime/path_utils.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

TEST(LongDirectoryTest, PathsRelativeToItAreRefused) {
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

}  // namespace
}  // namespace zr::test
