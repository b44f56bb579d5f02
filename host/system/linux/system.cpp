// The command's system services on Linux.
#include "system.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace zr::host {
namespace {

/// The usual size, and no more where there is more: "unlimited" is no number to divide.
constexpr rlim_t kMostStack = 8 << 20;

}  // namespace

std::vector<std::string> commandLineArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::size_t stackSize() {
    rlimit limit = {kMostStack, kMostStack};
    getrlimit(RLIMIT_STACK, &limit);
    return static_cast<std::size_t>(std::min(limit.rlim_cur, kMostStack));
}

void holdStandardStreams() {
    for (const int stream : {kStandardInput, kStandardOutput, kStandardError}) {
        if (!isDescriptorOpen(stream)) {
            // Gets the lowest number that is free: this one.
            open("/dev/null", stream == kStandardInput ? O_WRONLY : O_RDONLY);
        }
    }
}

bool isDescriptorOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) >= 0;
}

int openForReading(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

int openForWriting(const std::string& path) {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
}

std::ptrdiff_t readSome(int descriptor, char* bytes, std::size_t size) {
    ssize_t count = 0;
    do {
        count = read(descriptor, bytes, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

int duplicateDescriptor(int descriptor) {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

void redirectDescriptor(int target, int source) {
    while (dup2(source, target) < 0 && errno == EINTR) {
    }
}

bool closeDescriptor(int descriptor) {
    return close(descriptor) == 0;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

int openDroppedOutput() {
    return open("/dev/null", O_WRONLY | O_CLOEXEC);
}

void rewindDroppedOutput(int) {
    // The null device keeps nothing.
}

}  // namespace zr::host
