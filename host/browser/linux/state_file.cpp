// A file of the state folder on Linux.
#include "host/browser/state_file.h"

#include <cerrno>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zr::host {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

int descriptorOf(std::intptr_t handle) {
    return static_cast<int>(handle);
}

/// The descriptors of all open files. A child that a module forks shares their locks with this process
/// and would keep them when this process is killed, so it closes them.
class OpenFiles {
public:
    static OpenFiles& ofProcess() {
        // Never destroyed: a child may come at any time.
        static auto* const files = new OpenFiles;
        return *files;
    }

    /// @param open  opens a file, while no child can come.
    template <class Open>
    int add(const Open& open) {
        const std::lock_guard guard(m_mutex);
        const int descriptor = open();
        if (descriptor >= 0) {
            m_descriptors.push_back(descriptor);
        }
        return descriptor;
    }
    /// Does nothing in a child, which has closed it.
    void closeOne(int descriptor) {
        const std::lock_guard guard(m_mutex);
        if (std::erase(m_descriptors, descriptor) > 0) {
            // A child that did not come by fork may have a copy of the descriptor.
            flock(descriptor, LOCK_UN);
            close(descriptor);
        }
    }

private:
    OpenFiles() {
        pthread_atfork([] { ofProcess().m_mutex.lock(); }, [] { ofProcess().m_mutex.unlock(); },
                       [] {
                           for (const int descriptor : ofProcess().m_descriptors) {
                               close(descriptor);
                           }
                           ofProcess().m_descriptors.clear();
                           ofProcess().m_mutex.unlock();
                       });
    }

    std::mutex m_mutex;
    std::vector<int> m_descriptors;
};

}  // namespace

std::unique_ptr<StateFile> StateFile::open(const std::filesystem::path& path,
                                           std::error_code& error) {
    const int descriptor = OpenFiles::ofProcess().add([&] {
        // Without O_NONBLOCK a named pipe would make this wait.
        return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                      S_IRUSR | S_IWUSR);
    });
    if (descriptor < 0) {
        error = lastError();
        return nullptr;
    }
    std::unique_ptr<StateFile> file(new StateFile(descriptor));
    struct stat found = {};
    if (fstat(descriptor, &found) != 0 || !S_ISREG(found.st_mode)) {
        error = std::make_error_code(std::errc::not_supported);
        return nullptr;
    }
    error.clear();
    return file;
}

StateFile::~StateFile() {
    OpenFiles::ofProcess().closeOne(descriptorOf(m_handle));
}

bool StateFile::lock() {
    return flock(descriptorOf(m_handle), LOCK_EX | LOCK_NB) == 0;
}

std::uint64_t StateFile::size() const {
    struct stat found = {};
    return fstat(descriptorOf(m_handle), &found) == 0 ? static_cast<std::uint64_t>(found.st_size)
                                                      : 0;
}

std::string StateFile::read(std::uint64_t offset, std::size_t most) const {
    std::string bytes(most, '\0');
    std::size_t count = 0;
    while (count < most) {
        const ssize_t some = pread(descriptorOf(m_handle), bytes.data() + count, most - count,
                                   static_cast<off_t>(offset + count));
        if (some < 0 && errno == EINTR) {
            continue;
        }
        if (some <= 0) {
            break;
        }
        count += static_cast<std::size_t>(some);
    }
    bytes.resize(count);
    return bytes;
}

std::error_code StateFile::writeOnce(std::uint64_t offset, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t some =
            pwrite(descriptorOf(m_handle), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (some < 0 && errno == EINTR) {
            continue;
        }
        if (some < 0) {
            return lastError();
        }
        offset += static_cast<std::uint64_t>(some);
        bytes.remove_prefix(static_cast<std::size_t>(some));
    }
    return {};
}

std::error_code StateFile::truncate(std::uint64_t size) {
    return ftruncate(descriptorOf(m_handle), static_cast<off_t>(size)) != 0 ? lastError()
                                                                            : std::error_code();
}

}  // namespace zr::host
