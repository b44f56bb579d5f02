// Whole files and streams of bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

/// How the command line names standard input and output.
inline constexpr std::string_view kStandardStream = "-";

/// All bytes of a file, or of standard input for "-"; nothing when they cannot be read.
std::optional<std::string> readBytes(const std::string& path);

/// Makes bytes the content of a file.
bool writeFile(const std::string& path, std::string_view bytes);

}  // namespace zr::host
