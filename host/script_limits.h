// How much time and memory a script may take.
#pragma once

#include <duktape.h>

#include <chrono>
#include <cstddef>
#include <optional>

namespace zr::host {

struct ScriptLimits {
    std::optional<std::chrono::milliseconds> time;
    std::optional<std::size_t> bytes;
};

/// Counts what one script takes. The engine asks it for memory and, while the script runs, whether
/// its time is up.
class ScriptUse {
public:
    explicit ScriptUse(const ScriptLimits& limits);

    bool isTimeUp() const;
    /// As the C library's function; null also when the limit is reached.
    void* reallocate(void* block, std::size_t size);
    void free(void* block);

private:
    std::optional<std::chrono::steady_clock::time_point> m_end;
    std::optional<std::size_t> m_mostBytes;
    std::size_t m_usedBytes = 0;
};

/// Makes a script engine's heap that keeps to the limits; null when it cannot be made.
/// @param context  what the engine hands to its callbacks; useOf tells its ScriptUse.
duk_context* createLimitedHeap(void* context, duk_fatal_function fatal);

/// The use of the script whose context an engine hands out.
ScriptUse& useOf(void* context);

}  // namespace zr::host
