// Ends the process when a script whose time is up does not return to the engine.
#include "host/script/watchdog.h"

#include <utility>

#include "host/script/limits.h"

namespace zr::host {

ScriptWatchdog::ScriptWatchdog(std::chrono::steady_clock::time_point end, const LibraryCalls& calls,
                               std::function<void()> act)
    : m_act(std::move(act)), m_thread([this, end, &calls] { watch(end, calls); }) {}

ScriptWatchdog::~ScriptWatchdog() {
    {
        const std::lock_guard lock(m_mutex);
        m_isReleased = true;
    }
    m_released.notify_one();
    m_thread.join();
}

void ScriptWatchdog::watch(std::chrono::steady_clock::time_point end, const LibraryCalls& calls) {
    std::unique_lock lock(m_mutex);
    const auto isReleased = [this] { return m_isReleased; };
    if (m_released.wait_until(lock, end, isReleased)) {
        return;
    }
    unsigned before = calls;
    while (!m_released.wait_for(lock, kGrace, isReleased)) {
        const unsigned now = calls;
        if (now == before && now % 2 == 0) {
            m_act();
            return;
        }
        before = now;
    }
}

}  // namespace zr::host
