// zrkey browser uninstall: browsers forget zrkey-browser.
#include "host/commands/browser_options.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

Report uninstall(const InstallOptions& options) {
    // Whose manifests they are does not depend on what they are to say.
    const HostManifest manifest = {options.hostProgram(), {}};
    Report report;
    std::vector<Record> records;
    for (const Browser browser : options.browsers()) {
        const HostRegistration before =
            uninstallHost(browser, options.scope(), manifest, options.isForced);
        const bool wasThere = before.report.state != ManifestState::kMissing;
        const std::string file = toUtf8(before.file);
        report.output.append(nameOf(browser)).append("\t").append(nameOf(options.scope()));
        report.output.append(wasThere ? "\tremoved\t" : "\tmissing\t");
        report.output.append(file.empty() ? "-" : printable(file)).append("\n");
        records.push_back({{"browser", std::string(nameOf(browser))},
                           {"scope", std::string(nameOf(options.scope()))},
                           {"done", std::string(wasThere ? "removed" : "missing")},
                           {"file", file}});
    }
    report.fields = {{"manifests", records}};
    return report;
}

}  // namespace

void addBrowserUninstallCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser uninstall", uninstall);
    addScopeOptions(command, *options, "For the browsers");
    addBrowserOption(command, *options);
    addForceOption(command, *options, "Removes also a manifest of another program");
}

}  // namespace zr::host
