// A fresh working directory for a test.
#include "tests/support/temp_dir.h"

#include <fstream>
#include <string>

#include "tests/support/environment.h"

namespace zr::test {

TempDir::TempDir() : m_previous(std::filesystem::current_path()) {
    static int s_number = 0;
    // Beside the test, not in the system's temporary folder: module paths are relative to the
    // current directory, and under Wine the two are on different drives.
    m_root =
        m_previous / ("temp_" + std::to_string(processId()) + "_" + std::to_string(s_number++));
    std::filesystem::remove_all(m_root);
    m_work = m_root / "level" / "work";
    m_home = m_root / "home";
    std::filesystem::create_directories(m_work);
    std::filesystem::create_directories(m_home);
    std::filesystem::current_path(m_work);
    setEnvironment("ZRKEY_HOME_X64", "");
}

TempDir::~TempDir() {
    setEnvironment("ZRKEY_HOME_X64", "");
    std::error_code ignored;
    std::filesystem::current_path(m_previous, ignored);
    std::filesystem::remove_all(m_root, ignored);
}

void TempDir::enableLog() const {
    setEnvironment("ZRKEY_HOME_X64", m_home.string());
}

void TempDir::write(std::string_view name, std::string_view text) const {
    std::ofstream(m_work / name, std::ios::binary) << text;
}

void TempDir::writeConfig(std::string_view algo, std::string_view digest) const {
    write("config.xml", "<driver><algo>" + std::string(algo) + "</algo><digest>" +
                            std::string(digest) + "</digest></driver>");
}

std::string relativePath(const char* file) {
    // Compared by components: the test's folder and the file may be behind links.
    const std::filesystem::path target = std::filesystem::absolute(file).lexically_normal();
    return target.lexically_relative(std::filesystem::current_path()).generic_string();
}

}  // namespace zr::test
