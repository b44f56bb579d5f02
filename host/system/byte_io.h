// Whole files and streams of bytes.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "host/system/erasing_allocator.h"
#include "host/system/input_file.h"

namespace zr::host {

/// How the command line names standard input and output.
inline constexpr std::string_view kStandardStream = "-";

/// All bytes of a file, or of standard input for "-". No other copy of them stays in memory: a
/// script may contain a PIN.
/// @param error  says why they cannot be read; cleared otherwise.
ErasedBytes readBytes(const std::string& path, std::error_code& error);

/// The bytes that are left in a file. No other copy of them stays in memory.
/// @param most   how many it may be; more are the error file_too_large. A file whose size is known
///               is not read then.
/// @param error  says why they cannot be read; cleared otherwise.
ErasedBytes readAll(InputFile& file, std::size_t most, std::error_code& error);

/// Makes bytes the content of a file.
std::error_code writeFile(const std::string& path, std::string_view bytes);

/// Makes a file with these bytes. It is an error when there is one already; a file that cannot be
/// written whole is removed.
std::error_code writeNewFile(const std::string& path, std::string_view bytes);

}  // namespace zr::host
