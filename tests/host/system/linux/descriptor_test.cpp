// How files are opened and closed. On Linux alone: there a test can take the place of the system's
// function, and a descriptor tells how it was opened.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "byte_io.h"
#include "system.h"
#include "tests/support/temp_dir.h"

namespace {

bool s_isCloseFailing = false;

}  // namespace

/// Closes, and fails on request as a disk does that finds no room until then.
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

TEST(DescriptorTest, ProgramsStartedLaterGetNoFileOfOurs) {
    const TempDir folder;
    const int output = host::openForWriting("bytes.bin");
    const int input = host::openForReading("bytes.bin");
    const int copy = host::duplicateDescriptor(input);
    for (const int descriptor : {output, input, copy}) {
        EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
        EXPECT_TRUE(host::closeDescriptor(descriptor));
    }
}

TEST(DescriptorTest, ANewFileIsForWhomTheMaskOfTheProcessLeavesIt) {
    const TempDir folder;
    const mode_t before = umask(0);
    EXPECT_TRUE(host::writeFile("bytes.bin", "bytes"));
    umask(before);
    struct stat file = {};
    ASSERT_EQ(0, stat("bytes.bin", &file));
    EXPECT_EQ(0666U, file.st_mode & 07777U);
}

TEST(DescriptorTest, AFailingCloseIsAFailingWrite) {
    const TempDir folder;
    EXPECT_TRUE(host::writeFile("output.bin", "bytes"));
    s_isCloseFailing = true;
    const bool isWritten = host::writeFile("output.bin", "bytes");
    s_isCloseFailing = false;
    EXPECT_FALSE(isWritten);
}

}  // namespace
}  // namespace zr::test
