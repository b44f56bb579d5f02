// The command's system services on Linux.
#include "host/system/system.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/system/linux/await_descriptor.h"

namespace zr::host {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

int openFile(const std::string& path, int flags, std::error_code& error) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0666);
    error = descriptor < 0 ? lastError() : std::error_code();
    return descriptor;
}

}  // namespace

std::vector<std::string> commandLineArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}

std::string userConfigurationFolder() {
    std::string folder = environmentVariable("XDG_CONFIG_HOME").value_or("");
    if (folder.starts_with('/')) {
        return folder;
    }
    const std::string home = environmentVariable("HOME").value_or("");
    return home.starts_with('/') ? home + "/.config" : "";
}

std::string systemConfigurationFolder() {
    return "/etc";
}

std::string makePrivateFolder(std::error_code& error) {
    std::string folder = environmentVariable("TMPDIR").value_or("");
    if (!folder.starts_with('/')) {
        folder = "/tmp";
    }
    folder += "/zrkey-XXXXXX";
    // With the mode 0700.
    if (!mkdtemp(folder.data())) {
        error = lastError();
        return {};
    }
    error.clear();
    return folder;
}

void forEachVariable(const std::function<void(std::string_view, std::string_view)>& take) {
    for (char** variable = environ; variable && *variable; ++variable) {
        const std::string_view text = *variable;
        const std::size_t end = text.find('=');
        if (end != std::string_view::npos) {
            take(text.substr(0, end), text.substr(end + 1));
        }
    }
}

std::string pathProblem(const std::string& path, PathUse use) {
    if (path.find('\\') != std::string::npos) {
        return "contains \"\\\", which the library reads as a separator";
    }
    for (const std::string_view name : {"ORIGIN", "LIB", "PLATFORM"}) {
        for (const std::string& token :
             {std::string("$").append(name), std::string("${").append(name).append("}")}) {
            if (use == PathUse::kModule && path.find(token) != std::string::npos) {
                return "contains " + token + ", which the dynamic loader replaces by a folder";
            }
        }
    }
    return {};
}

std::string usablePath(const std::string& path) {
    return path;
}

namespace {

/// @return 0 when it cannot be found.
std::uintptr_t findLowestStackAddress() noexcept {
    // The arguments and the environment of the process are on the stack too, so its size alone says
    // little.
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return 0;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(lowest);
}

/// Of the first thread, found at the start: later a PIN may lock a page of its stack, and the C
/// library takes such a page for the end of the stack.
const std::uintptr_t s_lowestOfFirstThread = findLowestStackAddress();

}  // namespace

std::uintptr_t lowestStackAddress() {
    const std::uintptr_t lowest =
        gettid() == getpid() ? s_lowestOfFirstThread : findLowestStackAddress();
    if (lowest == 0) {
        throw std::bad_alloc();
    }
    return lowest;
}

void secureErase(void* memory, std::size_t size) {
    explicit_bzero(memory, size);
}

void holdStandardStreams() {
    for (const int stream : {kStandardInput, kStandardOutput, kStandardError}) {
        if (!isDescriptorOpen(stream)) {
            // The system gives it the lowest free number, which is this one.
            open("/dev/null", stream == kStandardInput ? O_WRONLY : O_RDONLY);
        }
    }
}

void ignoreClosedPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

bool isDescriptorOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) >= 0;
}

int openForReading(const std::string& path, std::error_code& error) {
    return openFile(path, O_RDONLY, error);
}

int openNewForWriting(const std::string& path, std::error_code& error) {
    return openFile(path, O_WRONLY | O_CREAT | O_EXCL, error);
}

int openForWriting(const std::string& path, std::error_code& error, bool* isNew) {
    const int descriptor = openNewForWriting(path, error);
    if (isNew) {
        *isNew = descriptor >= 0;
    }
    return error == std::errc::file_exists ? openFile(path, O_WRONLY | O_CREAT, error) : descriptor;
}

std::error_code emptyFile(int descriptor) {
    struct stat file = {};
    const bool keepsBytes = fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode);
    return keepsBytes && ftruncate(descriptor, 0) != 0 ? lastError() : std::error_code();
}

std::size_t readSome(int descriptor, char* bytes, std::size_t size, std::error_code& error) {
    if (!awaitDescriptor(descriptor, POLLIN)) {
        error = std::make_error_code(std::errc::interrupted);
        return 0;
    }
    ssize_t count = 0;
    do {
        count = read(descriptor, bytes, size);
    } while (count < 0 && errno == EINTR);
    error = count < 0 ? lastError() : std::error_code();
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

std::optional<std::uint64_t> fileSize(int descriptor) {
    struct stat file = {};
    return fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode)
               ? std::optional(static_cast<std::uint64_t>(file.st_size))
               : std::nullopt;
}

int duplicateDescriptor(int descriptor) {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

void redirectDescriptor(int target, int source) {
    while (dup2(source, target) < 0 && errno == EINTR) {
    }
}

std::error_code closeDescriptor(int descriptor) {
    return close(descriptor) != 0 ? lastError() : std::error_code();
}

std::error_code writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        if (!awaitDescriptor(descriptor, POLLOUT)) {
            return std::make_error_code(std::errc::interrupted);
        }
        const ssize_t written = write(descriptor, bytes.data(), mostBytesOfAWrite(bytes.size()));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return lastError();
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

int openDroppedOutput() {
    return open("/dev/null", O_WRONLY | O_CLOEXEC);
}

void rewindDroppedOutput(int) {
    // The null device keeps no output.
}

}  // namespace zr::host
