// Whole files and streams of bytes.
#include "byte_io.h"

#include <vector>

#include "system.h"

namespace zr::host {

std::optional<std::string> readBytes(const std::string& path) {
    const bool isStream = path == kStandardStream;
    const int descriptor = isStream ? kStandardInput : openForReading(path);
    if (descriptor < 0) {
        return std::nullopt;
    }
    std::string content;
    std::vector<char> block(65536);
    std::ptrdiff_t count = 0;
    while ((count = readSome(descriptor, block.data(), block.size())) > 0) {
        content.append(block.data(), static_cast<std::size_t>(count));
    }
    if (!isStream) {
        closeDescriptor(descriptor);
    }
    return count == 0 ? std::optional<std::string>(std::move(content)) : std::nullopt;
}

bool writeFile(const std::string& path, std::string_view bytes) {
    const int descriptor = openForWriting(path);
    if (descriptor < 0) {
        return false;
    }
    const bool isWritten = writeAll(descriptor, bytes);
    const bool isClosed = closeDescriptor(descriptor);
    return isWritten && isClosed;
}

}  // namespace zr::host
