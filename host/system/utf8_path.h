// Paths to and from UTF-8, with "/" between folders.
#pragma once

#include <filesystem>
#include <string>

namespace zr::host {

inline std::filesystem::path toPath(const std::string& utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

inline std::string toUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

}  // namespace zr::host
