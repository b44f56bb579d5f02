// The command's system services on Linux.
#include "system.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace zr::host {

std::vector<std::string> commandLineArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

int duplicateDescriptor(int descriptor) {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

void redirectDescriptor(int target, int source) {
    while (dup2(source, target) < 0 && errno == EINTR) {
    }
}

void closeDescriptor(int descriptor) {
    close(descriptor);
}

void writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

int openDroppedOutput() {
    return open("/dev/null", O_WRONLY | O_CLOEXEC);
}

void rewindDroppedOutput(int) {
    // The null device keeps nothing.
}

}  // namespace zr::host
