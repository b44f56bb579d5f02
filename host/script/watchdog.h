// Ends a process whose script does not come back to be told that its time is up.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace zr::host {

/// Where a script is, told to another thread: outside the library, or inside it. The count is odd
/// inside.
using LibraryCalls = std::atomic<unsigned>;

/// Marks a call into the library while it lives.
class LibraryCall {
public:
    explicit LibraryCall(LibraryCalls& calls) : m_calls(calls) { ++m_calls; }
    ~LibraryCall() { ++m_calls; }
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

private:
    LibraryCalls& m_calls;
};

/// A thread that waits while it lives, and acts when the script takes a second more than its time
/// without the library having a part in it.
class ScriptWatchdog {
public:
    /// @param act  called on the watchdog's thread; ends the process.
    ScriptWatchdog(std::chrono::steady_clock::time_point end, const LibraryCalls& calls,
                   std::function<void()> act);
    ~ScriptWatchdog();
    ScriptWatchdog(const ScriptWatchdog&) = delete;
    ScriptWatchdog& operator=(const ScriptWatchdog&) = delete;

private:
    void watch(std::chrono::steady_clock::time_point end, const LibraryCalls& calls);

    std::function<void()> m_act;
    std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_isReleased = false;
    std::thread m_thread;
};

}  // namespace zr::host
