// Ends the process when a script whose time is up does not return to the engine.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace zr::host {

/// Incremented on entry to and exit from the library; odd while a call is inside. Read by the
/// watchdog's thread.
using LibraryCalls = std::atomic<unsigned>;

/// Marks a call into the library until destruction.
class LibraryCall {
public:
    explicit LibraryCall(LibraryCalls& calls) : m_calls(calls) { ++m_calls; }
    ~LibraryCall() { ++m_calls; }
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

private:
    LibraryCalls& m_calls;
};

/// A thread that acts when a script takes a second more than its time and no call into the library
/// began, ended or is going on in that second. Destruction stops it.
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
