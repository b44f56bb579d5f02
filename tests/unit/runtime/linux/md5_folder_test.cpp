// MD5 of a file that opens but cannot be read. Linux only: there a directory is such a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "runtime/md5.h"

namespace zr::test {
namespace {

TEST(Md5DirectoryTest, Md5FileWithAReadErrorDigestsTheBytesBeforeIt) {
    unsigned char digest[16] = {};
    EXPECT_EQ(1, MD5File(".", digest));
    unsigned char nothing[16];
    MD5("", nothing);
    EXPECT_TRUE(std::equal(std::begin(nothing), std::end(nothing), digest));
}

}  // namespace
}  // namespace zr::test
