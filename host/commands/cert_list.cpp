// zrkey cert list: the certificates of a token.
#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/token/certificates.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct CertListOptions : TokenOptions {
    PinOptions pin;
};

Report listNames(const CertListOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    Report report;
    std::vector<Record> rows;
    for (const std::string& name : listCertificates(session.token())) {
        report.output += std::to_string(rows.size()) + '\t' + printable(name) + '\n';
        rows.push_back({{"index", std::uint64_t{rows.size()}}, {"name", name}});
    }
    report.fields = {{"certificates", rows}};
    return report;
}

}  // namespace

void addCertListCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "cert list", "Lists the certificates of a token", listNames);
    addTokenOptions(*command, *options);
    addPinOptions(*command, options->pin);
}

}  // namespace zr::host
