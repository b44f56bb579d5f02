// The log of what sites did: lines of JSON without payload. The connection decides what it notes.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "host/web/origin.h"

namespace zr::host {

class AuditLog {
public:
    /// A file that grew larger is renamed to "audit.1.jsonl", and so on.
    static constexpr std::size_t kMostBytes = 1 << 20;
    static constexpr int kOldFiles = 3;

    /// @param folder  exists; see browserStateFolder.
    AuditLog(const std::filesystem::path& folder, std::string origin);

    /// Appends a line: time, origin, process, member and outcome. A line that cannot be written is
    /// reported on standard error, once.
    /// @param member   "sign"; "connect" and "disconnect" for the connection.
    /// @param outcome  "ok" or the code of an error.
    void note(std::string_view member, std::string_view outcome);

private:
    std::filesystem::path m_folder;
    std::string m_origin;
    bool m_isReported = false;
};

}  // namespace zr::host
