// Bytes on their way to the library and back.
#pragma once

#include <zrkey/zrkey.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "host/output/console.h"
#include "host/output/encoding.h"
#include "host/system/input_file.h"

namespace zr::host {

/// What the PEM form of a signature is labelled with.
inline constexpr const char* kSignatureLabel = "SIGNATURE";

/// How messages name a file, or standard input for "-".
std::string placeOf(const std::string& path);

/// As many bytes as an array of the library holds.
inline constexpr std::size_t kMostInputBytes = 0x7FFFFFFF;

/// Reads a file or, for "-", standard input. Throws a Failure when it cannot.
/// @param most  larger input is refused, a file before it is read.
zrkey::ByteArray readInput(const std::string& path, std::size_t most = kMostInputBytes);

/// Reads a signature as a format has it. Throws a Failure when it cannot.
std::string readSignature(const std::string& path, ByteFormat format);

/// A file or, for "-", standard input, read piece by piece; the progress is shown on a terminal.
class InputPieces {
public:
    /// Opens the file. Throws a Failure when it cannot.
    /// @param work  what is done with the pieces: "digest".
    InputPieces(const std::string& path, std::string work, Console& console);

    /// Takes all pieces, once. Throws a Failure when they cannot be read.
    void forEach(const std::function<void(std::string_view)>& take);

private:
    std::string m_path;
    std::string m_work;
    Console& m_console;
    std::error_code m_error;
    InputFile m_file;
};

/// All of it at once: opens the file and takes all pieces.
void readInPieces(const std::string& path, const std::string& work, Console& console,
                  const std::function<void(std::string_view)>& take);

/// The bytes that an operation handed out. Throws std::bad_alloc when there is no array: when out
/// of memory, the library leaves its result untouched and still returns S_OK.
std::string takeBytes(const zrkey::ByteArray& result);

}  // namespace zr::host
