// Opening files with the checks that fopen cannot make.
#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// @return null, and the descriptor closed, unless it is of a regular file.
std::FILE* streamOfRegularFile(int descriptor, const char* mode) {
    struct stat status {};
    std::FILE* file = nullptr;
    if (descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        file = fdopen(descriptor, mode);
    }
    if (!file && descriptor >= 0) {
        close(descriptor);
    }
    return file;
}

}  // namespace

namespace zr {

// O_NONBLOCK lets the opening of a FIFO return, so that it can be refused. It changes nothing for a
// regular file.

std::FILE* openRegularFile(const char* path) {
    return streamOfRegularFile(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK), "rb");
}

std::FILE* openLogFile(const char* path) {
    return streamOfRegularFile(
        open(path, O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
             S_IRUSR | S_IWUSR),
        "a+");
}

}  // namespace zr
