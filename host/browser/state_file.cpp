// A file of the state folder: what both targets have in common.
#include "host/browser/state_file.h"

#include <chrono>
#include <thread>

namespace zr::host {

bool StateFile::lockSoon() {
    // Those who hold such a lock only read and write a few bytes.
    constexpr std::chrono::milliseconds kPause{5};
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (!lock()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

std::error_code StateFile::write(std::uint64_t offset, std::string_view bytes) {
    const std::uint64_t before = size();
    const std::error_code error = writeOnce(offset, bytes);
    if (error && size() > before) {
        truncate(before);
    }
    return error;
}

}  // namespace zr::host
