// The library's configuration: the places where the command looks for it, and its copy for the
// library.
#include "host/token/configuration.h"

#include <algorithm>
#include <array>
#include <system_error>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/paths.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kFileName = "config.xml";
constexpr const char* kFolderName = "zrkey";
/// The library refuses larger files.
constexpr std::size_t kMostBytes = 1 << 20;

using Kind = ConfigurationPlace::Kind;

/// @param folder  that of all programs' configurations.
std::optional<fs::path> fileIn(const std::string& folder) {
    const fs::path path = toPath(folder);
    return path.is_absolute() ? std::optional(path / kFolderName / kFileName) : std::nullopt;
}

}  // namespace

std::string ConfigurationPlace::name() const {
    switch (kind) {
        case Kind::kOption:
            return "option";
        case Kind::kWorkFolder:
            return "working folder";
        case Kind::kUser:
            return "user";
        case Kind::kSystem:
            return "system";
        case Kind::kBuiltIn:
            break;
    }
    return "built-in";
}

bool ConfigurationPlace::exists() const {
    std::error_code ignored;
    return kind == Kind::kBuiltIn || fs::status(file, ignored).type() != fs::file_type::not_found;
}

std::string ConfigurationPlace::description() const {
    switch (kind) {
        case Kind::kWorkFolder:
            return std::string(kFileName) + " in " + inQuotes(toUtf8(file.parent_path()));
        case Kind::kBuiltIn:
            return "the built-in configuration";
        default:
            return "the configuration " + inQuotes(toUtf8(file));
    }
}

std::optional<fs::path> userConfiguration() {
    return fileIn(userConfigurationFolder());
}

std::optional<fs::path> systemConfiguration() {
    return fileIn(systemConfigurationFolder());
}

std::vector<ConfigurationPlace> configurationPlaces(const ModuleOptions& options) {
    std::vector<ConfigurationPlace> places;
    if (!options.configuration.empty()) {
        places.push_back({Kind::kOption, absolutePath(toPath(options.configuration))});
    }
    const fs::path folder =
        options.workFolder.empty() ? currentFolder() : absolutePath(toPath(options.workFolder));
    places.push_back({Kind::kWorkFolder, folder / kFileName});
    if (const std::optional<fs::path> file = userConfiguration()) {
        places.push_back({Kind::kUser, *file});
    }
    if (const std::optional<fs::path> file = systemConfiguration()) {
        places.push_back({Kind::kSystem, *file});
    }
    places.push_back({Kind::kBuiltIn, {}});
    return places;
}

ConfigurationPlace chooseConfiguration(const std::vector<ConfigurationPlace>& places) {
    return *std::find_if(places.begin(), places.end(), [](const ConfigurationPlace& place) {
        return place.kind == Kind::kOption || place.exists();
    });
}

std::string readConfiguration(const ConfigurationPlace& place) {
    if (place.kind == Kind::kBuiltIn) {
        return std::string(kBuiltInConfiguration);
    }
    std::error_code error;
    std::string text;
    const int descriptor = openForReading(toUtf8(place.file), error);
    if (!error) {
        std::array<char, 4096> part;
        while (const std::size_t count = readSome(descriptor, part.data(), part.size(), error)) {
            text.append(part.data(), count);
            if (text.size() > kMostBytes) {
                break;
            }
        }
        closeDescriptor(descriptor);
    }
    if (error) {
        throw systemFailure(kExitModule, "read " + place.description(), error,
                            "check --config and the permissions; zrkey config path shows the "
                            "places of the configuration");
    }
    return text;
}

TemporaryConfiguration::TemporaryConfiguration(std::string_view text) {
    std::error_code error;
    m_folder = makePrivateFolder(error);
    if (!error) {
        error = writeNewFile(toUtf8(toPath(m_folder) / kFileName), text);
        if (error) {
            remove();
        }
    }
    if (error) {
        throw systemFailure(kExitModule, "copy the configuration for the library", error,
                            "check the folder for temporary files, or put config.xml into the "
                            "working folder");
    }
}

TemporaryConfiguration::~TemporaryConfiguration() {
    remove();
}

void TemporaryConfiguration::remove() const {
    std::error_code ignored;
    fs::remove(toPath(m_folder) / kFileName, ignored);
    fs::remove(toPath(m_folder), ignored);
}

}  // namespace zr::host
