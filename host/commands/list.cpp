// zrkey list: the tokens of a module.
#include "host/commands/command_frame.h"
#include "host/commands/token_fields.h"
#include "host/output/printable.h"
#include "host/token/token_state.h"

namespace zr::host {
namespace {

struct ListOptions {
    ReportOptions report;
    ModuleOptions module;
};

Report list(const ListOptions& options) {
    const LoadedModule module(options.module);
    const TokenTable table = readTokens(module.provider());
    Report report;
    std::vector<Record> tokens;
    for (const TokenRow& row : table.rows) {
        tokens.push_back(tokenFields(row));
        report.output += std::to_string(row.index) + '\t' + printable(row.label) + '\t' +
                         printable(row.serial) + '\t' + printable(row.manufacturer) + '\t' +
                         printable(row.model) + '\n';
    }
    if (table.rows.empty()) {
        const Cause cause = whyNoToken(module.calls());
        report.note = "zrkey: no token to list: " + cause.text + "; " + cause.advice + '\n';
    }
    report.fields = {{"slots", static_cast<std::uint64_t>(table.slots)}, {"tokens", tokens}};
    return report;
}

}  // namespace

void addListCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "list", list);
    addReportOptions(command, options->report);
    addModuleOptions(command, options->module);
}

}  // namespace zr::host
