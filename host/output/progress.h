// A line on the terminal that shows how far long work is.
//
//     Progress progress(console.progressLine(), "digest", input.size());
//     while (...) progress.add(count);
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

/// The line appears when the work takes longer than a second, and destruction erases it.
class Progress {
public:
    using Clock = std::chrono::steady_clock;
    using Write = std::function<void(std::string_view)>;

    /// @param write  writes to the terminal; empty: nothing is shown.
    /// @param work   "digest".
    /// @param total  the bytes of the whole work; nullopt when they are not known.
    Progress(Write write, std::string work, std::optional<std::uint64_t> total,
             std::function<Clock::time_point()> now = Clock::now);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// So many more bytes are done.
    void add(std::uint64_t bytes);

private:
    std::string text() const;
    void draw(const std::string& text);

    Write m_write;
    std::string m_work;
    std::optional<std::uint64_t> m_total;
    std::function<Clock::time_point()> m_now;
    Clock::time_point m_next;
    std::uint64_t m_done = 0;
    std::size_t m_shown = 0;
};

}  // namespace zr::host
