// Whole files and streams of bytes.
#include "host/system/byte_io.h"

#include <cstdint>
#include <filesystem>
#include <limits>

#include "host/system/output_file.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace zr::host {

ErasedBytes readBytes(const std::string& path, std::error_code& error) {
    InputFile file(path, error);
    return error ? ErasedBytes() : readAll(file, std::numeric_limits<std::size_t>::max(), error);
}

ErasedBytes readAll(InputFile& file, std::size_t most, std::error_code& error) {
    error.clear();
    const std::uint64_t size = file.size().value_or(0);
    ErasedBytes content;
    if (size > most) {
        error = std::make_error_code(std::errc::file_too_large);
        return content;
    }
    content.reserve(static_cast<std::size_t>(size));
    ErasedBytes block(65536);
    while (const std::size_t count = file.read(block.data(), block.size(), error)) {
        if (count > most - content.size()) {
            error = std::make_error_code(std::errc::file_too_large);
            return {};
        }
        content.insert(content.end(), block.data(), block.data() + count);
    }
    return content;
}

std::error_code writeFile(const std::string& path, std::string_view bytes) {
    std::error_code error;
    OutputFile file(path, error);
    return error ? error : file.write(bytes);
}

std::error_code writeNewFile(const std::string& path, std::string_view bytes) {
    std::error_code error;
    const int descriptor = openNewForWriting(path, error);
    if (error) {
        return error;
    }
    error = writeAll(descriptor, bytes);
    const std::error_code closeError = closeDescriptor(descriptor);
    if (!error) {
        error = closeError;
    }
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(toPath(path), ignored);
    }
    return error;
}

}  // namespace zr::host
