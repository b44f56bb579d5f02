// The limits that hold for all connections of a user of this machine.
//
// "limits.lock" is locked while the other files are read and written. A connection keeps one of the
// files "connection-N" locked, which contains its origin; so the system gives its place back when the
// process ends. No file is removed: another process may just have opened it.
#include "host/browser/site_limits.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

using std::chrono::milliseconds;

constexpr const char* kGuard = "limits.lock";
constexpr const char* kWaits = "cancelled";
/// The size of the file of the waits, always: so it can be written when the disk is full.
constexpr std::size_t kWaitBytes = 16384;
constexpr std::size_t kMostOrigin = 1024;

Failure unusable(const std::filesystem::path& path, std::string cause) {
    return commandFailure(kExitFailure, "use the file " + inQuotes(toUtf8(path)), std::move(cause),
                          "correct the folder, or remove it");
}

/// The same for all processes, and not set by anybody, unlike the time of day.
milliseconds now() {
    return std::chrono::duration_cast<milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

/// The first line of a file.
std::string lineOf(const StateFile& file) {
    const std::string text = file.read(0, kMostOrigin);
    return text.substr(0, text.find('\n'));
}

/// Whether a site still waits after a prompt that was cancelled then. A time in the future was written
/// before the last restart of the machine.
bool isWaiting(milliseconds cancelled, milliseconds time) {
    return cancelled <= time && time - cancelled < SiteLimits::kWaitAfterCancel;
}

struct Wait {
    milliseconds cancelled;
    std::string origin;
};

/// The sites that wait, the last one first. What is not a line of ours is left out.
std::vector<Wait> readWaits(const StateFile& file, milliseconds time) {
    std::vector<Wait> waits;
    const std::string text = file.read(0, kWaitBytes);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        const std::size_t space = line.find(' ');
        milliseconds::rep count = 0;
        const char* const number = line.data();
        if (space != std::string::npos &&
            std::from_chars(number, number + space, count).ptr == number + space &&
            isWaiting(milliseconds(count), time)) {
            waits.push_back({milliseconds(count), line.substr(space + 1)});
        }
    }
    return waits;
}

std::string textOf(const std::vector<Wait>& waits) {
    std::string text;
    for (const Wait& wait : waits) {
        const std::string line =
            std::to_string(wait.cancelled.count()).append(" ").append(wait.origin).append("\n");
        if (text.size() + line.size() <= kWaitBytes) {
            text.append(line);
        }
    }
    text.resize(kWaitBytes, '\n');
    return text;
}

}  // namespace

SiteLimits::SiteLimits(std::filesystem::path folder, Origin origin)
    : m_folder(std::move(folder)), m_origin(std::move(origin)) {}

std::unique_ptr<StateFile> SiteLimits::openFile(const std::string& name) const {
    std::error_code error;
    std::unique_ptr<StateFile> file = StateFile::open(m_folder / name, error);
    if (!file) {
        throw unusable(m_folder / name, error.message());
    }
    return file;
}

std::unique_ptr<StateFile> SiteLimits::openLocked(const char* name) const {
    std::unique_ptr<StateFile> file = openFile(name);
    if (!file->lockSoon()) {
        throw unusable(m_folder / name, "another program keeps it locked");
    }
    return file;
}

bool SiteLimits::takeConnection() {
    const std::unique_ptr<StateFile> guard = openLocked(kGuard);
    const std::unique_ptr<StateFile> waits = openFile(kWaits);
    std::unique_ptr<StateFile> place;
    int ofOrigin = 0;
    for (int i = 0; i < kConnections; ++i) {
        std::unique_ptr<StateFile> file = openFile("connection-" + std::to_string(i));
        if (!file->lock()) {
            ofOrigin += lineOf(*file) == m_origin.text() ? 1 : 0;
        } else if (!place) {
            place = std::move(file);
        }
    }
    if (!place || ofOrigin >= kConnectionsPerOrigin) {
        return false;
    }
    const std::string line = m_origin.text() + '\n';
    std::error_code error = place->write(0, line);
    if (!error) {
        error = place->truncate(line.size());
    }
    if (!error && waits->size() < kWaitBytes) {
        error = waits->write(0, textOf(readWaits(*waits, now())));
    }
    if (error) {
        throw unusable(m_folder, error.message());
    }
    m_connection = std::move(place);
    return true;
}

std::unique_ptr<HeldLock> SiteLimits::takePrompt() {
    std::unique_ptr<HeldLock> file = openFile("prompt.lock");
    return file->lock() ? std::move(file) : nullptr;
}

void SiteLimits::noteCancelled() {
    noteWait(now());
}

void SiteLimits::noteAborted() {
    // As if it had been cancelled so long ago that only the shorter time is left.
    noteWait(now() - (kWaitAfterCancel - kWaitAfterAbort));
}

void SiteLimits::noteWait(milliseconds cancelled) {
    m_cancelled = m_cancelled ? std::max(*m_cancelled, cancelled) : cancelled;
    try {
        const std::unique_ptr<StateFile> guard = openLocked(kGuard);
        const std::unique_ptr<StateFile> file = openFile(kWaits);
        std::vector<Wait> waits = {{cancelled, m_origin.text()}};
        for (Wait& wait : readWaits(*file, now())) {
            if (wait.origin != m_origin.text()) {
                waits.push_back(std::move(wait));
            } else {
                waits.front().cancelled = std::max(waits.front().cancelled, wait.cancelled);
            }
        }
        file->write(0, textOf(waits));
    } catch (const Failure&) {
        // This object waits all the same.
    }
}

std::optional<std::chrono::seconds> SiteLimits::waitAfterCancel() const {
    const milliseconds time = now();
    std::optional<milliseconds> last = m_cancelled;
    const std::unique_ptr<StateFile> guard = openLocked(kGuard);
    for (const Wait& wait : readWaits(*openFile(kWaits), time)) {
        if (wait.origin == m_origin.text() && (!last || wait.cancelled > *last)) {
            last = wait.cancelled;
        }
    }
    if (!last || !isWaiting(*last, time)) {
        return std::nullopt;
    }
    return std::chrono::ceil<std::chrono::seconds>(kWaitAfterCancel - (time - *last));
}

}  // namespace zr::host
