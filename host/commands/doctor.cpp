// zrkey doctor: looks at everything that a login needs, without logging in.
#include "host/token/diagnosis.h"

#include <string>
#include <vector>

#include "host/commands/command_frame.h"
#include "host/output/printable.h"

namespace zr::host {
namespace {

struct DoctorOptions {
    ReportOptions report;
    ModuleOptions module;
};

Report doctor(const DoctorOptions& options) {
    const Diagnosis diagnosis = diagnose(options.module);
    Report report;
    std::vector<Record> checks;
    for (const Check& check : diagnosis.checks) {
        const std::string status = check.statusName();
        report.output.append(status)
            .append("\t")
            .append(check.name)
            .append("\t")
            .append(printable(check.found));
        Record record = {{"check", check.name}, {"status", status}, {"found", check.found}};
        if (!check.advice.empty()) {
            report.output.append("; ").append(check.advice);
            record.push_back({"advice", check.advice});
        }
        report.output.append("\n");
        checks.push_back(std::move(record));
    }
    report.exitCode = diagnosis.exitCode;
    report.fields = {{"login", diagnosis.exitCode == kExitOk},
                     {"exit", static_cast<std::uint64_t>(diagnosis.exitCode)},
                     {"checks", checks}};
    return report;
}

}  // namespace

void addDoctorCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "doctor", doctor);
    addReportOptions(command, options->report);
    addModuleOptions(command, options->module);
}

}  // namespace zr::host
