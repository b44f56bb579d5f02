// The log of what sites did.
#include "host/browser/audit_log.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <utility>

#include "host/browser/complaint.h"
#include "host/browser/state_file.h"
#include "host/browser/state_folder.h"
#include "host/system/system.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// "2030-01-31T12:34:56.789Z"
std::string timeText() {
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss clock(now - day);
    char text[64];
    std::snprintf(
        text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int{date.year()},
        unsigned{date.month()}, unsigned{date.day()}, static_cast<int>(clock.hours().count()),
        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
        static_cast<int>(clock.subseconds().count()));
    return text;
}

fs::path oldFile(const fs::path& folder, int number) {
    return folder / (number == 0 ? "audit.jsonl" : "audit." + std::to_string(number) + ".jsonl");
}

/// Renames each file to the next number; the last one is lost.
void rotate(const fs::path& folder, std::error_code& error) {
    for (int i = AuditLog::kOldFiles - 1; i >= 0; --i) {
        if (fs::exists(fs::symlink_status(oldFile(folder, i), error))) {
            fs::rename(oldFile(folder, i), oldFile(folder, i + 1), error);
            if (error) {
                return;
            }
        }
    }
    error.clear();
}

std::error_code append(const fs::path& folder, const std::string& line) {
    std::error_code error;
    // Nobody renames the files while they are locked out by this one.
    const std::unique_ptr<StateFile> guard = StateFile::open(folder / "audit.lock", error);
    if (!guard) {
        return error;
    }
    if (!guard->lockSoon()) {
        return std::make_error_code(std::errc::timed_out);
    }
    std::unique_ptr<StateFile> file = StateFile::open(oldFile(folder, 0), error);
    if (file && file->size() > AuditLog::kMostBytes) {
        file.reset();
        rotate(folder, error);
        if (error) {
            return error;
        }
        file = StateFile::open(oldFile(folder, 0), error);
    }
    if (!file) {
        return error;
    }
    const std::uint64_t end = file->size();
    // A process that was killed may have left half a line.
    const bool isBroken = end > 0 && file->read(end - 1, 1) != "\n";
    return file->write(end, isBroken ? "\n" + line : line);
}

}  // namespace

AuditLog::AuditLog(const fs::path& folder, std::string origin)
    : m_folder(folder), m_origin(std::move(origin)) {}

void AuditLog::note(std::string_view member, std::string_view outcome) {
    const nlohmann::ordered_json line = {{"time", timeText()},
                                         {"origin", m_origin},
                                         {"process", processNumber()},
                                         {"member", member},
                                         {"outcome", outcome}};
    // Bytes that are not UTF-8 do not cost the line.
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    const std::error_code error = append(m_folder, line.dump(-1, ' ', true, kReplace).append("\n"));
    if (error && !m_isReported) {
        m_isReported = true;
        complain(std::string("zrkey-browser: cannot write the log: ")
                     .append(error.message())
                     .append("\n"));
    }
}

}  // namespace zr::host
