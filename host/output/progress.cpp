// A line on the terminal that shows how far long work is.
#include "host/output/progress.h"

#include <algorithm>
#include <utility>

namespace zr::host {
namespace {

constexpr std::chrono::milliseconds kFirst(1000);
constexpr std::chrono::milliseconds kBetween(200);

std::string inMebibytes(std::uint64_t bytes) {
    return std::to_string(bytes >> 20) + " MiB";
}

}  // namespace

Progress::Progress(Write write, std::string work, std::optional<std::uint64_t> total,
                   std::function<Clock::time_point()> now)
    : m_write(std::move(write)),
      m_work(std::move(work)),
      m_total(total),
      m_now(std::move(now)),
      m_next(m_now() + kFirst) {}

Progress::~Progress() {
    if (m_shown > 0) {
        draw("");
        m_write("\r");
    }
}

void Progress::add(std::uint64_t bytes) {
    m_done += bytes;
    if (m_write && m_now() >= m_next) {
        draw(text());
        m_next = m_now() + kBetween;
    }
}

std::string Progress::text() const {
    std::string text = m_work + ": " + inMebibytes(m_done);
    if (m_total.value_or(0) > 0) {
        // A file may grow while it is read.
        const std::uint64_t done = std::min(m_done, *m_total);
        const auto percent = static_cast<unsigned>(100.0 * static_cast<double>(done) /
                                                   static_cast<double>(*m_total));
        text.append(" of ").append(inMebibytes(*m_total));
        text.append(" (").append(std::to_string(percent)).append(" %)");
    }
    return text;
}

void Progress::draw(const std::string& text) {
    // Blanks, not an escape sequence: every terminal knows them.
    std::string line = '\r' + text;
    line.append(m_shown > text.size() ? m_shown - text.size() : 0, ' ');
    m_shown = text.size();
    m_write(line);
}

}  // namespace zr::host
