// What was noted of interruptions.
#include "host/system/interruption.h"

namespace zr::host {
namespace {

// Used by a signal's handler.
static_assert(std::atomic<int>::is_always_lock_free);
std::atomic<int> s_noted = 0;

}  // namespace

std::atomic<int>& notedInterruption() {
    return s_noted;
}

bool isInterrupted() {
    return s_noted != 0;
}

}  // namespace zr::host
