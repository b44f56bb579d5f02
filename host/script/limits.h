// How much time and memory a script may use.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zr::host {

/// The engine's message when a script's time is up.
inline constexpr const char* kTimeoutMessage = "execution timeout";

/// How long a script that is out of time may take to end.
inline constexpr std::chrono::seconds kGrace{1};

struct ScriptLimits {
    std::optional<std::chrono::milliseconds> time;
    std::optional<std::size_t> bytes;
    /// Whether the process may be ended when a script that is out of time stays in a long loop of
    /// the engine, where the engine does not check the time.
    bool mayEndProcess = false;
};

/// Counts what one script uses. The engine allocates memory through it, and asks it during the run
/// whether the time is up or the stack is nearly full. Construct it on the thread that runs the
/// script.
class ScriptUse {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit ScriptUse(const ScriptLimits& limits);

    /// Gives the script the time of its limits anew; a shell does for each statement.
    void startTime();
    /// Until startTime the time is unlimited, and not up.
    void stopTime();
    /// Whether the script has to stop now.
    bool isTimeUp();
    /// Whether the time has been up for kGrace: the script should have ended.
    bool isOverdue() const;
    /// Whether isTimeUp has ever returned true.
    bool wasStopped() const { return m_wasStopped; }
    /// Whether the stack is so full that the engine must not recurse further.
    bool isStackShort() const;
    const std::optional<TimePoint>& end() const { return m_end; }
    /// Like std::realloc; null also when the limit is reached. Both functions erase what they free:
    /// it may hold a PIN.
    void* reallocate(void* block, std::size_t size);
    void free(void* block);
    /// Counts memory that is allocated elsewhere on behalf of the script.
    /// @return false, with nothing counted, when the limit is reached.
    bool charge(std::size_t bytes);
    void discharge(std::size_t bytes) { m_usedBytes -= bytes; }

private:
    std::optional<std::chrono::milliseconds> m_time;
    std::optional<TimePoint> m_end;
    bool m_wasStopped = false;
    std::uintptr_t m_deepest;  ///< the lowest address that the engine may use of the stack
    std::optional<std::size_t> m_mostBytes;
    std::size_t m_usedBytes = 0;
};

/// Memory counted as the script's until destruction.
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

}  // namespace zr::host
