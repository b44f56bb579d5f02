// Whole files and streams of bytes.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace zr::host {

/// How the command line names standard input and output.
inline constexpr std::string_view kStandardStream = "-";

/// All bytes of a file, or of standard input for "-".
/// @param error  says why they cannot be read; cleared otherwise.
std::string readBytes(const std::string& path, std::error_code& error);

/// Makes bytes the content of a file.
std::error_code writeFile(const std::string& path, std::string_view bytes);

}  // namespace zr::host
