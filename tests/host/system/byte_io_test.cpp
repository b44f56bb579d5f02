// Whole files, read and written byte by byte.
#include <gtest/gtest.h>

#include "host/system/byte_io.h"
#include "tests/host/next_descriptor.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

const std::error_code kNoError;

/// The bytes of a file that can be read.
std::string readWhole(const std::string& path) {
    std::error_code error = std::make_error_code(std::errc::io_error);
    const host::ErasedBytes bytes = host::readBytes(path, error);
    EXPECT_EQ(kNoError, error);
    return std::string(host::viewOf(bytes));
}

TEST(ByteIoTest, BytesAreReadBackUnchanged) {
    const TempDir folder;
    std::string bytes("\0\r\n\x1a\xff", 5);
    for (const std::size_t size : {0U, 5U, 65536U, 65537U, 200000U}) {
        bytes.resize(size, 'x');
        EXPECT_EQ(kNoError, host::writeFile("bytes.bin", bytes));
        EXPECT_EQ(bytes, readWhole("bytes.bin"));
    }
}

TEST(ByteIoTest, ShorterContentReplacesALongerFile) {
    const TempDir folder;
    EXPECT_EQ(kNoError, host::writeFile("bytes.bin", "longer than the next"));
    EXPECT_EQ(kNoError, host::writeFile("bytes.bin", "short"));
    EXPECT_EQ("short", readWhole("bytes.bin"));
}

TEST(ByteIoTest, EveryFileIsClosed) {
    const TempDir folder;
    const int before = nextDescriptor();
    EXPECT_EQ(kNoError, host::writeFile("bytes.bin", "bytes"));
    EXPECT_EQ("bytes", readWhole("bytes.bin"));
    std::error_code error;
    host::readBytes(".", error);
    EXPECT_EQ(before, nextDescriptor());
}

TEST(ByteIoTest, FileIsReadUpToTheLimitOrNotAtAll) {
    const TempDir folder;
    EXPECT_EQ(kNoError, host::writeFile("bytes.bin", "bytes"));
    std::error_code error;
    for (const std::size_t most : {5U, 6U}) {
        host::InputFile file("bytes.bin", error);
        EXPECT_EQ(5u, file.size());
        EXPECT_EQ("bytes", host::viewOf(host::readAll(file, most, error)));
        EXPECT_EQ(kNoError, error);
    }
    host::InputFile file("bytes.bin", error);
    EXPECT_TRUE(host::readAll(file, 4, error).empty());
    EXPECT_EQ(std::errc::file_too_large, error);
    // Nothing was read.
    char byte = 0;
    EXPECT_EQ(1u, file.read(&byte, 1, error));
    EXPECT_EQ('b', byte);
}

TEST(ByteIoTest, MissingFileOrFolderFailsWithTheSystemsError) {
    const TempDir folder;
    const std::errc missing = std::errc::no_such_file_or_directory;
    std::error_code error;
    EXPECT_TRUE(host::readBytes("missing.bin", error).empty());
    EXPECT_EQ(missing, error);
    EXPECT_EQ("No such file or directory", error.message());
    EXPECT_TRUE(host::readBytes(".", error).empty());
    EXPECT_NE(kNoError, error);
    EXPECT_EQ(missing, host::writeFile("missing/bytes.bin", "bytes"));
    EXPECT_NE(kNoError, host::writeFile(".", "bytes"));
}

}  // namespace
}  // namespace zr::test
