// A file or standard input that is read piece by piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

namespace zr::host {

/// An open file, or standard input for "-".
class InputFile {
public:
    /// @param error  says why the file cannot be opened; cleared otherwise.
    InputFile(const std::string& path, std::error_code& error);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// nullopt when it is not a regular file: its end is not known.
    std::optional<std::uint64_t> size() const;
    /// @return how many; 0 at the end, and when they cannot be read: error says why then.
    std::size_t read(char* bytes, std::size_t size, std::error_code& error);

private:
    bool m_isStream;
    int m_descriptor;
};

}  // namespace zr::host
