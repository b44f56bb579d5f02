// Closing the output: a close that fails is a failing write. On Linux alone: there a test can take the
// place of the system's function.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "byte_io.h"
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

TEST(CloseTest, AFailingCloseIsAFailingWrite) {
    const TempDir folder;
    EXPECT_TRUE(host::writeFile("output.bin", "bytes"));
    s_isCloseFailing = true;
    const bool isWritten = host::writeFile("output.bin", "bytes");
    s_isCloseFailing = false;
    EXPECT_FALSE(isWritten);
}

}  // namespace
}  // namespace zr::test
