// zrkey browser install: makes zrkey-browser known to browsers.
#include "host/commands/browser_options.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

/// What was done to a registration.
const char* nameOfInstallation(ManifestState before) {
    switch (before) {
        case ManifestState::kInstalled:
            return "unchanged";
        case ManifestState::kMissing:
            return "installed";
        case ManifestState::kForeign:
            return "replaced";
        default:
            return "repaired";
    }
}

Report install(const InstallOptions& options) {
    const std::filesystem::path program = options.hostProgram();
    if (const std::string problem = programProblem(program); !problem.empty()) {
        throw commandFailure(kExitNotFound, "install zrkey-browser",
                             inQuotes(toUtf8(program)) + ' ' + problem,
                             "install it, or name it with --host");
    }
    const HostManifest manifest = expectedManifest(options.scope(), program);
    Report report;
    std::vector<Record> records;
    for (const Browser browser : options.browsers()) {
        const HostRegistration before =
            installHost(browser, options.scope(), manifest, options.isForced);
        const std::string done = nameOfInstallation(before.report.state);
        const std::string file = toUtf8(ownManifest(browser, options.scope()).value_or(""));
        report.output.append(nameOf(browser)).append("\t").append(nameOf(options.scope()));
        report.output.append("\t").append(done).append("\t").append(printable(file)).append("\n");
        records.push_back({{"browser", std::string(nameOf(browser))},
                           {"scope", std::string(nameOf(options.scope()))},
                           {"done", done},
                           {"file", file}});
    }
    report.fields = {{"host", toUtf8(program)}, {"manifests", records}};
    return report;
}

}  // namespace

void addBrowserInstallCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser install", install);
    addScopeOptions(command, *options, "For the browsers");
    addBrowserOption(command, *options);
    addHostOption(command, *options);
    addForceOption(command, *options, "Replaces also a manifest of another program");
}

}  // namespace zr::host
