// Bytes on their way to the library and back.
#include "host/commands/byte_arrays.h"

#include <cstdint>
#include <new>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/interruption.h"

namespace zr::host {

std::string placeOf(const std::string& path) {
    return path == kStandardStream ? "standard input" : inQuotes(path);
}

namespace {

Failure unreadable(const std::string& path, std::error_code error) {
    return systemFailure(kExitFailure, "read " + placeOf(path), error,
                         "check the path and its permissions");
}

Failure tooLarge(const std::string& path, const InputFile& file, std::size_t most) {
    const std::optional<std::uint64_t> size = file.size();
    const std::string bytes =
        size ? std::to_string(*size) + " bytes" : "more than " + std::to_string(most) + " bytes";
    return commandFailure(kExitFailure, "use " + placeOf(path), "it has " + bytes,
                          "give at most " + std::to_string(most) + " bytes");
}

ErasedBytes readWhole(const std::string& path, std::size_t most) {
    std::error_code error;
    InputFile file(path, error);
    ErasedBytes bytes;
    if (!error) {
        bytes = readAll(file, most, error);
    }
    if (error == std::errc::file_too_large) {
        throw tooLarge(path, file, most);
    }
    if (error) {
        throw unreadable(path, error);
    }
    return bytes;
}

}  // namespace

zrkey::ByteArray readInput(const std::string& path, std::size_t most) {
    return zrkey::ByteArray(viewOf(readWhole(path, most)));
}

std::string readSignature(const std::string& path, ByteFormat format) {
    // A hundred times as many as the longest has.
    constexpr std::size_t kMostSignatureBytes = std::size_t{1} << 20;
    std::optional<std::string> signature =
        decode(viewOf(readWhole(path, kMostSignatureBytes)), format, kSignatureLabel);
    if (!signature) {
        throw commandFailure(kExitFailure, "read the signature in " + placeOf(path),
                             "it is not in the format that --format names",
                             "give the format in which it was written");
    }
    return std::move(*signature);
}

InputPieces::InputPieces(const std::string& path, std::string work, Console& console)
    : m_path(path), m_work(std::move(work)), m_console(console), m_file(path, m_error) {
    if (m_error) {
        throw unreadable(m_path, m_error);
    }
}

void InputPieces::forEach(const std::function<void(std::string_view)>& take) {
    Progress progress(m_console.progressLine(), m_work, m_file.size());
    std::vector<char> piece(std::size_t{1} << 16);
    while (const std::size_t count = m_file.read(piece.data(), piece.size(), m_error)) {
        take({piece.data(), count});
        progress.add(count);
        stopIfInterrupted();
    }
    stopIfInterrupted();
    if (m_error) {
        throw unreadable(m_path, m_error);
    }
}

void readInPieces(const std::string& path, const std::string& work, Console& console,
                  const std::function<void(std::string_view)>& take) {
    InputPieces(path, work, console).forEach(take);
}

std::string takeBytes(const zrkey::ByteArray& result) {
    std::optional<std::string> bytes = result.bytes();
    if (!bytes) {
        throw std::bad_alloc();
    }
    return std::move(*bytes);
}

}  // namespace zr::host
