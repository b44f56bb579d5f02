// A file that is opened before its bytes are known.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace zr::host {

/// An open file whose bytes stay as they are until it is written. Destruction removes a file that
/// this made and did not write.
class OutputFile {
public:
    /// @param error  says why the file cannot be opened; cleared otherwise.
    OutputFile(const std::string& path, std::error_code& error);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& path() const { return m_path; }
    /// Makes bytes the content of the file and closes it. To be called once.
    std::error_code write(std::string_view bytes);

private:
    std::string m_path;
    bool m_isNew = false;
    int m_descriptor;
};

}  // namespace zr::host
