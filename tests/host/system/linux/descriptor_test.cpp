// How files are opened and closed. On Linux only, where a test can replace the system's function and
// read the flags of a descriptor.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "host/system/byte_io.h"
#include "host/system/system.h"
#include "tests/support/temp_dir.h"

namespace {

bool s_isCloseFailing = false;

}  // namespace

/// Closes, and fails on request, as when a disk is full at that moment.
extern "C" int close(int descriptor) {
    const int result = static_cast<int>(syscall(SYS_close, descriptor));
    if (s_isCloseFailing) {
        errno = EIO;
        return -1;
    }
    return result;
}

namespace zr::test {
namespace {

TEST(DescriptorTest, OpenFilesAreNotInherited) {
    const TempDir folder;
    std::error_code error;
    const int output = host::openForWriting("bytes.bin", error);
    const int input = host::openForReading("bytes.bin", error);
    const int copy = host::duplicateDescriptor(input);
    for (const int descriptor : {output, input, copy}) {
        EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
        EXPECT_FALSE(host::closeDescriptor(descriptor));
    }
}

TEST(DescriptorTest, NewFileHasTheRightsThatTheMaskAllows) {
    const TempDir folder;
    const mode_t before = umask(0);
    EXPECT_FALSE(host::writeFile("bytes.bin", "bytes"));
    umask(before);
    struct stat file = {};
    ASSERT_EQ(0, stat("bytes.bin", &file));
    EXPECT_EQ(0666U, file.st_mode & 07777U);
}

TEST(DescriptorTest, FailingCloseFailsTheWrite) {
    const TempDir folder;
    EXPECT_FALSE(host::writeFile("output.bin", "bytes"));
    s_isCloseFailing = true;
    const std::error_code error = host::writeFile("output.bin", "bytes");
    s_isCloseFailing = false;
    EXPECT_EQ(std::errc::io_error, error);
}

}  // namespace
}  // namespace zr::test
