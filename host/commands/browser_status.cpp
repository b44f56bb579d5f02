// zrkey browser status: which browsers know zrkey-browser, and what is wrong.
#include <algorithm>

#include "host/commands/browser_options.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"
#include "host/token/load_cause.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

struct StatusRow {
    std::string name;  ///< of a browser, or "settings", "module"
    std::string scope;
    std::string state;
    std::string file;
    std::string problem;
};

const char* nameOfState(ManifestState state) {
    switch (state) {
        case ManifestState::kInstalled:
            return "installed";
        case ManifestState::kMissing:
            return "missing";
        case ManifestState::kOutdated:
            return "outdated";
        case ManifestState::kBroken:
            return "broken";
        case ManifestState::kForeign:
            break;
    }
    return "foreign";
}

StatusRow manifestRow(Browser browser, SettingsScope scope, const fs::path& program) {
    HostManifest expected = {program, {}};
    std::string settingsProblem;
    try {
        expected = expectedManifest(scope, program);
    } catch (const Failure&) {
        // The row of the settings says it.
        settingsProblem = "the settings cannot be read, so its extensions are not compared";
    }
    const HostRegistration found = examineRegistration(browser, scope, expected);
    const ManifestReport& report = found.report;
    const bool isUnknown = report.state == ManifestState::kOutdated && !settingsProblem.empty();
    return {nameOf(browser), nameOf(scope), nameOfState(report.state), toUtf8(found.file),
            report.problem.empty() ? ""
            : isUnknown            ? settingsProblem
                                   : "it " + report.problem};
}

StatusRow settingsRow(SettingsScope scope) {
    const std::optional<fs::path> file = settingsFile(scope);
    StatusRow row = {"settings", nameOf(scope), "missing", file ? toUtf8(*file) : "", ""};
    std::error_code error;
    try {
        readSettings(scope);
        row.state = file && fs::exists(*file, error) ? "installed" : "missing";
    } catch (const Failure& failure) {
        row.state = "broken";
        row.problem = failure.cause;
    }
    return row;
}

StatusRow moduleRow() {
    StatusRow row = {"module", "-", "missing", "", ""};
    try {
        row.file = SitePolicy::read().module();
        if (row.file.empty()) {
            row.problem = "set it by zrkey browser module PATH";
            return row;
        }
        const std::optional<Cause> cause = findFileCause(toPath(row.file));
        row.state = cause ? "broken" : "installed";
        row.problem = cause ? cause->text : "";
    } catch (const Failure&) {
        row.state = "broken";
        row.problem = "the settings cannot be read";
    }
    return row;
}

void addRow(Report& report, std::vector<Record>& records, const StatusRow& row) {
    report.output.append(row.name).append("\t").append(row.scope).append("\t").append(row.state);
    report.output.append("\t").append(row.file.empty() ? "-" : printable(row.file));
    report.output.append(row.problem.empty() ? "" : "\t").append(printable(row.problem));
    report.output.append("\n");
    Record record = {{"name", row.name}, {"scope", row.scope}, {"state", row.state}};
    if (!row.file.empty()) {
        record.push_back({"file", row.file});
    }
    if (!row.problem.empty()) {
        record.push_back({"problem", row.problem});
    }
    records.push_back(std::move(record));
}

Report showStatus(const InstallOptions& options) {
    const fs::path program = options.hostProgram();
    std::vector<StatusRow> manifests;
    std::vector<StatusRow> others;
    for (const SettingsScope scope : options.scopes()) {
        for (const Browser browser : options.browsers()) {
            manifests.push_back(manifestRow(browser, scope, program));
        }
        others.push_back(settingsRow(scope));
    }
    others.push_back(moduleRow());
    Report report;
    std::vector<Record> records;
    bool isWrong = false;
    bool isInstalled = false;
    for (const StatusRow& row : manifests) {
        addRow(report, records, row);
        isInstalled = isInstalled || row.state == "installed";
        isWrong = isWrong || (row.state != "installed" && row.state != "missing");
    }
    for (const StatusRow& row : others) {
        addRow(report, records, row);
        isWrong = isWrong || row.state == "broken";
    }
    report.fields = {{"host", toUtf8(program)}, {"status", records}};
    report.exitCode = isWrong ? kExitFailure : isInstalled ? kExitOk : kExitNotFound;
    return report;
}

}  // namespace

void addBrowserStatusCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser status", showStatus);
    addShownScopeOptions(command, *options, "What is");
    addBrowserOption(command, *options);
    addHostOption(command, *options);
}

}  // namespace zr::host
