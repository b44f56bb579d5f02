// A file that is opened before its bytes are known.
#include "host/system/output_file.h"

#include <filesystem>
#include <utility>

#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace zr::host {

OutputFile::OutputFile(const std::string& path, std::error_code& error)
    : m_path(path), m_descriptor(openForWriting(path, error, &m_isNew)) {}

OutputFile::~OutputFile() {
    if (m_descriptor < 0) {
        return;
    }
    closeDescriptor(m_descriptor);
    if (m_isNew) {
        std::error_code ignored;
        std::filesystem::remove(toPath(m_path), ignored);
    }
}

std::error_code OutputFile::write(std::string_view bytes) {
    const int descriptor = std::exchange(m_descriptor, -1);
    std::error_code error = emptyFile(descriptor);
    if (!error) {
        error = writeAll(descriptor, bytes);
    }
    const std::error_code closeError = closeDescriptor(descriptor);
    return error ? error : closeError;
}

}  // namespace zr::host
