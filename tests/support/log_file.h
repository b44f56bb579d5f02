// The log file of a provider, as lines without time stamps and line numbers.
//
//     "[12:00:00.123] [Load:55] Begin" reads as "[Load] Begin".
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace zr::test {

/// Every log file below a home, in no order.
std::vector<std::filesystem::path> findLogFiles(const std::filesystem::path& home);

/// The bytes of a file, line ends as "\n".
std::string readText(const std::filesystem::path& file);

/// Whether a text is like another: a 9 stands for any digit, every other character for itself.
bool hasShape(std::string_view text, std::string_view shape);

/// The lines of all log files below a home, reduced as above.
std::vector<std::string> readLogLines(const std::filesystem::path& home);

}  // namespace zr::test
