// SpinLock: a lock that needs no memory and cannot fail, for short lists.
//
// On Windows the first lock of a std::mutex allocates, and so does the first one that has to wait.
#pragma once

#include <atomic>
#include <thread>

namespace zr {

/// Hold it briefly. Works with std::lock_guard.
class SpinLock {
public:
    void lock() {
        while (m_isLocked.test_and_set(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    void unlock() { m_isLocked.clear(std::memory_order_release); }

private:
    std::atomic_flag m_isLocked = ATOMIC_FLAG_INIT;
};

}  // namespace zr
