// How much time and memory a script may use.
#include "host/script/limits.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "host/system/system.h"

namespace zr::host {
namespace {

/// The header of each block: the size of header and block, padded to the strictest alignment.
constexpr std::size_t kHeader = alignof(std::max_align_t);

/// What the engine leaves of the stack: a quarter, but not less than so many bytes. It is for the
/// library, which is called at any depth, and for the engine's own functions between two checks.
constexpr std::size_t kLeastReserve = 96 << 10;
/// More stack is not used: an unlimited one is not a number to calculate with.
constexpr std::size_t kMostStack = 8 << 20;

/// The caller's position in the stack. Not the address of a local variable: sanitizers may keep
/// variables elsewhere.
[[gnu::always_inline]] inline std::uintptr_t stackPosition() {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

std::uintptr_t deepest(std::uintptr_t position) {
    const std::size_t room = std::min<std::size_t>(position - lowestStackAddress(), kMostStack);
    return position - room + std::max(room / 4, kLeastReserve);
}

std::size_t sizeOf(const void* block) {
    std::size_t size = 0;
    std::memcpy(&size, static_cast<const char*>(block) - kHeader, sizeof size);
    return size;
}

}  // namespace

ScriptUse::ScriptUse(const ScriptLimits& limits)
    : m_time(limits.time), m_deepest(deepest(stackPosition())), m_mostBytes(limits.bytes) {
    startTime();
}

void ScriptUse::startTime() {
    stopTime();
    if (m_time) {
        m_end = std::chrono::steady_clock::now() + *m_time;
    }
}

void ScriptUse::stopTime() {
    m_end.reset();
    m_wasStopped = false;
}

bool ScriptUse::isTimeUp() {
    m_wasStopped = m_wasStopped || (m_end && std::chrono::steady_clock::now() >= *m_end);
    return m_wasStopped;
}

bool ScriptUse::isOverdue() const {
    return m_end && std::chrono::steady_clock::now() >= *m_end + kGrace;
}

bool ScriptUse::isStackShort() const {
    return stackPosition() < m_deepest;
}

bool ScriptUse::charge(std::size_t bytes) {
    if (m_mostBytes && bytes > *m_mostBytes - m_usedBytes) {
        return false;
    }
    m_usedBytes += bytes;
    return true;
}

void* ScriptUse::reallocate(void* block, std::size_t size) {
    if (size == 0) {
        free(block);
        return nullptr;
    }
    if (size > std::numeric_limits<std::size_t>::max() - kHeader) {
        return nullptr;
    }
    size += kHeader;
    const std::size_t before = block ? sizeOf(block) : 0;
    if (m_mostBytes && size > before && size - before > *m_mostBytes - m_usedBytes) {
        return nullptr;
    }
    // Not realloc: it would leave a copy in the old place, or behind the end of a smaller block.
    char* const made = static_cast<char*>(std::malloc(size));
    if (!made) {
        return nullptr;
    }
    std::memcpy(made, &size, sizeof size);
    if (block) {
        std::memcpy(made + kHeader, block, std::min(size, before) - kHeader);
        free(block);
    }
    m_usedBytes += size;
    return made + kHeader;
}

void ScriptUse::free(void* block) {
    if (block) {
        const std::size_t size = sizeOf(block);
        void* const start = static_cast<char*>(block) - kHeader;
        m_usedBytes -= size;
        secureErase(start, size);
        std::free(start);
    }
}

bool ScriptCharge::add(std::size_t bytes) {
    if (!m_use.charge(bytes)) {
        return false;
    }
    m_bytes += bytes;
    return true;
}

}  // namespace zr::host
