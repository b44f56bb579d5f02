// A file or standard input that is read piece by piece.
#include "host/system/input_file.h"

#include "host/system/byte_io.h"
#include "host/system/system.h"

namespace zr::host {

InputFile::InputFile(const std::string& path, std::error_code& error)
    : m_isStream(path == kStandardStream),
      m_descriptor(m_isStream ? kStandardInput : openForReading(path, error)) {
    if (m_isStream) {
        error.clear();
    }
}

InputFile::~InputFile() {
    if (!m_isStream && m_descriptor >= 0) {
        closeDescriptor(m_descriptor);
    }
}

std::optional<std::uint64_t> InputFile::size() const {
    return fileSize(m_descriptor);
}

std::size_t InputFile::read(char* bytes, std::size_t size, std::error_code& error) {
    return readSome(m_descriptor, bytes, size, error);
}

}  // namespace zr::host
