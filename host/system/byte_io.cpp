// Whole files and streams of bytes.
#include "host/system/byte_io.h"

#include <filesystem>

#include "host/system/system.h"

namespace zr::host {
namespace {

std::error_code writeAndClose(int descriptor, std::string_view bytes) {
    const std::error_code error = writeAll(descriptor, bytes);
    const std::error_code closeError = closeDescriptor(descriptor);
    return error ? error : closeError;
}

}  // namespace

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
    const int descriptor = openForWriting(path, error);
    return error ? error : writeAndClose(descriptor, bytes);
}

std::error_code writeNewFile(const std::string& path, std::string_view bytes) {
    std::error_code error;
    const int descriptor = openNewForWriting(path, error);
    if (error) {
        return error;
    }
    error = writeAndClose(descriptor, bytes);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(std::u8string(path.begin(), path.end()), ignored);
    }
    return error;
}

}  // namespace zr::host
