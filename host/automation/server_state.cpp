// What the whole server shares.
#include "host/automation/server_state.h"

#include <atomic>

namespace zr::automation {
namespace {

std::atomic<long> liveObjects = 0;
std::atomic<long> serverLocks = 0;

}  // namespace

std::recursive_mutex& libraryLock() {
    // Never destroyed: a client may release its last object while the process ends.
    static std::recursive_mutex& lock = *new std::recursive_mutex;
    return lock;
}

LiveObject::LiveObject() noexcept {
    ++liveObjects;
}

LiveObject::~LiveObject() {
    --liveObjects;
}

void lockServer(bool isLocked) noexcept {
    if (isLocked) {
        ++serverLocks;
        return;
    }
    // A client that unlocks too often must not undo the lock of another.
    long locks = serverLocks;
    while (locks > 0 && !serverLocks.compare_exchange_weak(locks, locks - 1)) {
    }
}

bool isInUse() noexcept {
    return liveObjects > 0 || serverLocks > 0;
}

}  // namespace zr::automation
