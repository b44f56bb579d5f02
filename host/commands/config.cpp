// zrkey config: the configuration in use, the places where it is looked for, and a file to start
// from.
#include <filesystem>
#include <optional>
#include <sstream>
#include <system_error>

#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

using Kind = ConfigurationPlace::Kind;

struct ConfigOptions {
    ReportOptions report;
    ModuleOptions module;
};

/// Lines of a file, made safe to show.
std::string printableLines(const std::string& text) {
    std::string lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        lines += printable(line) + '\n';
    }
    return lines;
}

Report showConfig(const ConfigOptions& options) {
    const ConfigurationPlace place = chooseConfiguration(configurationPlaces(options.module));
    const std::string text = readConfiguration(place);
    Report report{"place:\t" + place.name() + '\n', {{"place", place.name()}}};
    if (place.kind != Kind::kBuiltIn) {
        const std::string file = toUtf8(place.file);
        report.output += "file:\t" + printable(file) + '\n';
        report.fields.push_back({"file", file});
    }
    report.output += printableLines(text);
    report.fields.push_back({"content", text});
    return report;
}

Report showPlaces(const ConfigOptions& options) {
    const std::vector<ConfigurationPlace> places = configurationPlaces(options.module);
    const ConfigurationPlace used = chooseConfiguration(places);
    Report report;
    std::vector<Record> records;
    for (const ConfigurationPlace& place : places) {
        const bool exists = place.exists();
        const bool isUsed = place.kind == used.kind;
        Record record = {{"place", place.name()}};
        std::string file = "-";
        if (place.kind != Kind::kBuiltIn) {
            file = toUtf8(place.file);
            record.push_back({"file", file});
        }
        record.push_back({"exists", exists});
        record.push_back({"used", isUsed});
        records.push_back(std::move(record));
        const std::string state = exists ? (isUsed ? "used" : "exists") : "missing";
        report.output += place.name() + '\t' + printable(file) + '\t' + state + '\n';
    }
    report.fields = {{"places", records}};
    return report;
}

struct InitOptions {
    ReportOptions report;
};

Report initConfig(const InitOptions&) {
    const std::string asked = "write the user's configuration";
    const std::optional<fs::path> path = userConfiguration();
    if (!path) {
        throw commandFailure(kExitFailure, asked, "the environment names no folder for it",
                             "set HOME or XDG_CONFIG_HOME, on Windows APPDATA");
    }
    const std::string file = toUtf8(*path);
    std::error_code error;
    fs::create_directories(path->parent_path(), error);
    if (!error) {
        error = writeNewFile(file, kBuiltInConfiguration);
    }
    if (error) {
        throw systemFailure(kExitFailure, asked + ' ' + inQuotes(file), error,
                            error == std::errc::file_exists ? "edit it, or remove it first"
                                                            : "check free space and permissions");
    }
    return {"wrote " + printable(file) + '\n', {{"file", file}}};
}

void addPlaceOptions(CLI::App& command, ConfigOptions& options) {
    addReportOptions(command, options.report);
    addConfigurationOptions(command, options.module);
}

}  // namespace

void addConfigShowCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "config show", showConfig);
    addPlaceOptions(command, *options);
}

void addConfigInitCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "config init", initConfig);
    addReportOptions(command, options->report);
}

void addConfigPathCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "config path", showPlaces);
    addPlaceOptions(command, *options);
}

}  // namespace zr::host
