// The log file of a provider.
#include "tests/support/log_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace zr::test {
namespace {

/// A line without its time and the number of its source line; any other line as it is.
std::string withoutStamp(const std::string& line) {
    constexpr std::string_view kStamp = "[99:99:99.999] [";
    if (!hasShape(line.substr(0, kStamp.size()), kStamp)) {
        return line;
    }
    const std::size_t nameEnd = line.find_first_of(":]", kStamp.size());
    if (nameEnd == std::string::npos || nameEnd == kStamp.size() || line[nameEnd] != ':') {
        return line;
    }
    const std::size_t numberEnd = line.find_first_not_of("0123456789", nameEnd + 1);
    if (numberEnd == std::string::npos || numberEnd == nameEnd + 1 ||
        line.compare(numberEnd, 2, "] ") != 0) {
        return line;
    }
    return '[' + line.substr(kStamp.size(), nameEnd - kStamp.size()) + line.substr(numberEnd);
}

}  // namespace

bool hasShape(std::string_view text, std::string_view shape) {
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(),
                      [](char got, char wanted) {
                          return wanted == '9' ? got >= '0' && got <= '9' : got == wanted;
                      });
}

std::vector<std::filesystem::path> findLogFiles(const std::filesystem::path& home) {
    std::vector<std::filesystem::path> files;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home, ignored)) {
        if (entry.is_regular_file() && entry.path().extension() == ".log") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string readText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

std::vector<std::string> readLogLines(const std::filesystem::path& home) {
    std::vector<std::string> lines;
    for (const auto& file : findLogFiles(home)) {
        std::istringstream text(readText(file));
        for (std::string line; std::getline(text, line);) {
            lines.push_back(withoutStamp(line));
        }
    }
    return lines;
}

}  // namespace zr::test
