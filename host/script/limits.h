// How much time and memory a script may take.
#pragma once

#include <duktape.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zr::host {

/// The engine's words when a script's time is up.
inline constexpr const char* kTimeoutMessage = "execution timeout";

struct ScriptLimits {
    std::optional<std::chrono::milliseconds> time;
    std::optional<std::size_t> bytes;
    /// Whether a script that is out of time may be ended with its process, where the engine does
    /// not ask: in its own long loops.
    bool mayEndProcess = false;
};

/// Counts what one script takes. The engine asks it for memory and, while the script runs, whether
/// its time is up or the stack short. It is made on the thread that runs the script.
class ScriptUse {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit ScriptUse(const ScriptLimits& limits);

    /// Whether the script has to stop now.
    bool isTimeUp();
    /// Whether isTimeUp has ever said so.
    bool wasStopped() const { return m_wasStopped; }
    /// Whether the calling function is so deep in the stack that the engine must not go deeper.
    bool isStackShort() const;
    const std::optional<TimePoint>& end() const { return m_end; }
    /// As the C library's function; null also when the limit is reached.
    void* reallocate(void* block, std::size_t size);
    void free(void* block);
    /// Counts memory that is taken elsewhere on the script's behalf.
    /// @return false, with nothing counted, when the limit is reached.
    bool charge(std::size_t bytes);
    void discharge(std::size_t bytes) { m_usedBytes -= bytes; }

private:
    std::optional<TimePoint> m_end;
    bool m_wasStopped = false;
    std::uintptr_t m_deepest;
    std::optional<std::size_t> m_mostBytes;
    std::size_t m_usedBytes = 0;
};

/// Memory counted as a script's until it goes.
class ScriptCharge {
public:
    explicit ScriptCharge(ScriptUse& use) : m_use(use) {}
    ~ScriptCharge() { m_use.discharge(m_bytes); }
    ScriptCharge(const ScriptCharge&) = delete;
    ScriptCharge& operator=(const ScriptCharge&) = delete;

    /// @return false, with nothing counted, when the limit is reached.
    bool add(std::size_t bytes);

private:
    ScriptUse& m_use;
    std::size_t m_bytes = 0;
};

/// Makes a script engine's heap that keeps to the limits; null when it cannot be made.
/// @param context  what the engine hands to its callbacks; useOf tells its ScriptUse.
duk_context* createLimitedHeap(void* context, duk_fatal_function fatal);

/// The use of the script whose context an engine hands out.
ScriptUse& useOf(void* context);

}  // namespace zr::host
