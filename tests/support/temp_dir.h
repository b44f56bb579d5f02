// A fresh working directory for a test, with at least two levels below the root, and a log home
// beside it. On destruction both are removed; directory and environment are restored.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zr::test {

class TempDir {
public:
    /// Makes "level/work" in a new folder below the current directory the current one; no log home is set.
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    const std::filesystem::path& root() const { return m_root; }
    const std::filesystem::path& work() const { return m_work; }
    /// The log home: an existing, empty folder.
    const std::filesystem::path& home() const { return m_home; }

    /// Names the log home in ZRKEY_HOME_X64.
    void enableLog() const;
    /// Writes a file below the working directory.
    void write(std::string_view name, std::string_view text) const;
    /// Writes a "config.xml" with an algorithm list and a digest list.
    void writeConfig(std::string_view algo = "RSA", std::string_view digest = "MD5") const;

private:
    std::filesystem::path m_previous;
    std::filesystem::path m_root;
    std::filesystem::path m_work;
    std::filesystem::path m_home;
};

/// The path of a file relative to the current directory, as the library wants module paths.
std::string relativePath(const char* file);

/// Sets a variable of the process's environment; empty removes it.
void setEnvironment(const std::string& name, const std::string& value);
/// Sets a variable of the process's environment to the empty text.
void setEmptyEnvironment(const std::string& name);

}  // namespace zr::test
