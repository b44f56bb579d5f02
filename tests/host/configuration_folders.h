// Folders for the user's and, on Windows, the system's configuration, instead of those of the person
// who runs the tests.
#pragma once

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"

namespace zr::test {

class ConfigurationFolders {
public:
    /// @param root  contains the folders; they need not exist.
    explicit ConfigurationFolders(const std::filesystem::path& root)
        : m_user(root / "user"), m_system(root / "system") {
        for (std::size_t i = 0; i < kVariables.size(); ++i) {
            const char* value = std::getenv(kVariables[i]);
            m_before[i] = value ? value : "";
        }
        setEnvironment("XDG_CONFIG_HOME", m_user.string());
        setEnvironment("HOME", (root / "home").string());
        setEnvironment("APPDATA", m_user.string());
        setEnvironment("PROGRAMDATA", m_system.string());
    }
    ~ConfigurationFolders() {
        for (std::size_t i = 0; i < kVariables.size(); ++i) {
            setEnvironment(kVariables[i], m_before[i]);
        }
    }
    ConfigurationFolders(const ConfigurationFolders&) = delete;
    ConfigurationFolders& operator=(const ConfigurationFolders&) = delete;

    std::filesystem::path userFile() const { return m_user / "zrkey" / "config.xml"; }
    /// Used on Windows only: on Linux the folder is fixed.
    std::filesystem::path systemFile() const { return m_system / "zrkey" / "config.xml"; }

    /// Takes the user's folder away.
    static void forgetUser() {
        for (const char* variable : {"XDG_CONFIG_HOME", "HOME", "APPDATA"}) {
            setEnvironment(variable, "");
        }
    }
    /// Changes the folder for temporary files.
    static void setTemporary(const std::string& folder) {
        for (const char* variable : {"TMPDIR", "TMP", "TEMP"}) {
            setEnvironment(variable, folder);
        }
    }

private:
    static constexpr std::array<const char*, 7> kVariables = {
        "XDG_CONFIG_HOME", "HOME", "APPDATA", "PROGRAMDATA", "TMPDIR", "TMP", "TEMP"};

    std::filesystem::path m_user;
    std::filesystem::path m_system;
    std::array<std::string, kVariables.size()> m_before;
};

}  // namespace zr::test
