// zrkey cert list: the certificates of a token.
#include "certificates.h"
#include "command_frame.h"
#include "token_session.h"

namespace zr::host {
namespace {

struct CertListOptions : TokenOptions {
    PinOptions pin;
};

Result listNames(const CertListOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    Result result;
    std::vector<Record> rows;
    for (const std::string& name : listCertificates(session.token())) {
        result.output += std::to_string(rows.size()) + '\t' + printable(name) + '\n';
        rows.push_back({{"index", std::uint64_t{rows.size()}}, {"name", name}});
    }
    result.fields = {{"certificates", rows}};
    return result;
}

}  // namespace

void addCertListCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "cert list", "Lists the certificates of a token", listNames);
    addTokenOptions(*command, *options);
    addPinOptions(*command, options->pin);
}

}  // namespace zr::host
