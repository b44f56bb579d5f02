// The library's configuration: the places where the command looks for it, and its copy for the
// library, which reads only "config.xml" in the current folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/token/token_options.h"

namespace zr::host {

/// Used when there is no file.
inline constexpr std::string_view kBuiltInConfiguration =
    "<driver>\n"
    "  <algo>SHA1WithRSA</algo>\n"
    "  <digest>MD5</digest>\n"
    "</driver>\n";

struct ConfigurationPlace {
    enum class Kind { kOption, kWorkFolder, kUser, kSystem, kBuiltIn };
    Kind kind;
    std::filesystem::path file;  ///< absolute; empty for the built-in configuration

    /// "option", "working folder", "user", "system" or "built-in".
    std::string name() const;
    /// Also when it cannot be looked at, so that it is not passed over in silence.
    bool exists() const;
    /// How messages name it.
    std::string description() const;
};

/// The places in the order in which they are looked at. Without the user's or the system's when the
/// environment does not say where it is. Throws a Failure when there is no current folder.
std::vector<ConfigurationPlace> configurationPlaces(const ModuleOptions& options);

/// The user's file and the system's; nothing when the environment does not say where it is.
std::optional<std::filesystem::path> userConfiguration();
std::optional<std::filesystem::path> systemConfiguration();

/// The file of --config, also when it does not exist; otherwise the first place that exists.
ConfigurationPlace chooseConfiguration(const std::vector<ConfigurationPlace>& places);

/// The text of a configuration; of a file that is too large for the library, only the first part.
/// Throws a Failure when it cannot be read.
std::string readConfiguration(const ConfigurationPlace& place);

/// A folder that only this user can use, with a configuration in it. Both are removed on
/// destruction.
class TemporaryConfiguration {
public:
    /// Throws a Failure when it cannot be written.
    explicit TemporaryConfiguration(std::string_view text);
    ~TemporaryConfiguration();
    TemporaryConfiguration(const TemporaryConfiguration&) = delete;
    TemporaryConfiguration& operator=(const TemporaryConfiguration&) = delete;

    const std::string& folder() const { return m_folder; }

private:
    void remove() const;

    std::string m_folder;
};

}  // namespace zr::host
