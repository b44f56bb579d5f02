// The log file of a provider.
#include "tests/support/log_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace zr::test {

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
    static const std::regex prefix(R"(^\[\d\d:\d\d:\d\d\.\d\d\d\] \[([^\]:]+):\d+\] )");
    std::vector<std::string> lines;
    for (const auto& file : findLogFiles(home)) {
        std::istringstream text(readText(file));
        for (std::string line; std::getline(text, line);) {
            lines.push_back(std::regex_replace(line, prefix, "[$1] "));
        }
    }
    return lines;
}

}  // namespace zr::test
