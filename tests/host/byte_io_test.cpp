// Whole files in and out, byte by byte.
#include <gtest/gtest.h>

#include "byte_io.h"
#include "tests/host/next_descriptor.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

TEST(ByteIoTest, BytesComeBackAsTheyWereWritten) {
    const TempDir folder;
    std::string bytes("\0\r\n\x1a\xff", 5);
    for (const std::size_t size : {0U, 5U, 65536U, 65537U, 200000U}) {
        bytes.resize(size, 'x');
        EXPECT_TRUE(host::writeFile("bytes.bin", bytes));
        EXPECT_EQ(bytes, host::readBytes("bytes.bin"));
    }
}

TEST(ByteIoTest, NothingIsLeftOfALongerFile) {
    const TempDir folder;
    EXPECT_TRUE(host::writeFile("bytes.bin", "longer than the next"));
    EXPECT_TRUE(host::writeFile("bytes.bin", "short"));
    EXPECT_EQ("short", host::readBytes("bytes.bin"));
}

TEST(ByteIoTest, NoFileIsLeftOpen) {
    const TempDir folder;
    const int before = nextDescriptor();
    EXPECT_TRUE(host::writeFile("bytes.bin", "bytes"));
    EXPECT_EQ("bytes", host::readBytes("bytes.bin"));
    host::readBytes(".");
    EXPECT_EQ(before, nextDescriptor());
}

TEST(ByteIoTest, WhatIsNoFileIsNeitherReadNorWritten) {
    const TempDir folder;
    EXPECT_EQ(std::nullopt, host::readBytes("missing.bin"));
    EXPECT_EQ(std::nullopt, host::readBytes("."));
    EXPECT_FALSE(host::writeFile(".", "bytes"));
    EXPECT_FALSE(host::writeFile("missing/bytes.bin", "bytes"));
}

}  // namespace
}  // namespace zr::test
