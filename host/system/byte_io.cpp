// Whole files and streams of bytes.
#include "host/system/byte_io.h"

#include <filesystem>

#include "host/system/output_file.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace zr::host {
ErasedBytes readBytes(const std::string& path, std::error_code& error) {
    error.clear();
    const bool isStream = path == kStandardStream;
    const int descriptor = isStream ? kStandardInput : openForReading(path, error);
    if (error) {
        return {};
    }
    ErasedBytes content;
    ErasedBytes block(65536);
    while (const std::size_t count = readSome(descriptor, block.data(), block.size(), error)) {
        content.insert(content.end(), block.data(), block.data() + count);
    }
    if (!isStream) {
        closeDescriptor(descriptor);
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
