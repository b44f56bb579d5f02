// Bytes on their way to the library and back.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>

namespace zr::host {

/// Reads a file or, for "-", standard input. Throws a Failure when it cannot.
zrkey::ByteArray readInput(const std::string& path);

/// The bytes that an operation handed out. Throws std::bad_alloc when there is no array: when out
/// of memory, the library leaves its result untouched and still returns S_OK.
std::string takeBytes(const zrkey::ByteArray& result);

}  // namespace zr::host
