// What the host says to the people who run it.
#include "host/browser/complaint.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <thread>

#include "host/system/system.h"

namespace zr::host {
namespace {

/// A line may take so long.
constexpr std::chrono::milliseconds kMostTime{100};
/// So many lines may wait.
constexpr int kMostLines = 4;

}  // namespace

void complain(const std::string& line) {
    // Nobody may read standard error, and a write to a full pipe would keep the caller.
    static std::atomic<int> waiting = 0;
    if (waiting >= kMostLines) {
        return;
    }
    try {
        const auto written = std::make_shared<std::promise<void>>();
        const std::future<void> done = written->get_future();
        std::thread([written, line] {
            ++waiting;
            writeAll(kStandardError, line);
            --waiting;
            written->set_value();
        }).detach();
        done.wait_for(kMostTime);
    } catch (const std::exception&) {
        // Without a thread there is no line.
    }
}

}  // namespace zr::host
