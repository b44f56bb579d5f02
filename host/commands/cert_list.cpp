// zrkey cert list: the certificates of a token.
#include "host/commands/command_frame.h"
#include "host/output/colour.h"
#include "host/output/console.h"
#include "host/output/encoding.h"
#include "host/output/printable.h"
#include "host/token/certificates.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct CertListOptions : TokenOptions {
    PinOptions pin;
};

/// The day of a time.
std::string dayOf(const std::string& time) {
    return time.substr(0, time.find('T'));
}

std::string expiryOf(const CertificateFacts& facts) {
    return (facts.isExpired ? "expired " : "until ") + dayOf(facts.notAfter);
}

std::string keyOf(const CertificateFacts& facts) {
    return facts.keyBits == 0 ? facts.keyType : facts.keyType + ' ' + std::to_string(facts.keyBits);
}

/// @param isColoured  shows an expiry in the past in red.
std::string lineOf(const TokenCertificate& row, bool isColoured) {
    std::vector<std::string> columns = {std::to_string(row.index), row.name};
    if (row.facts) {
        const CertificateFacts& facts = *row.facts;
        columns.insert(columns.end(), {facts.subject, facts.issuer, expiryOf(facts),
                                       facts.serialNumber, keyOf(facts)});
    } else {
        columns.insert(columns.end(), {"not readable as X.509", "-", "-", "-", "-"});
    }
    columns.push_back(idText(row));
    std::string line;
    for (const std::string& column : columns) {
        const bool isRed =
            isColoured && row.facts && row.facts->isExpired && column == expiryOf(*row.facts);
        line.append(line.empty() ? "" : "\t");
        line.append(isRed ? inRed(column) : printable(column));
    }
    return line + '\n';
}

Record fieldsOf(const TokenCertificate& row) {
    Record fields = {{"index", std::uint64_t{row.index}},
                     {"name", row.name},
                     {"id", toHex(row.id)},
                     {"label", row.label}};
    if (row.facts) {
        const CertificateFacts& facts = *row.facts;
        fields.insert(fields.end(), {{"subject", facts.subject},
                                     {"issuer", facts.issuer},
                                     {"commonName", facts.commonName},
                                     {"serialNumber", facts.serialNumber},
                                     {"notBefore", facts.notBefore},
                                     {"notAfter", facts.notAfter},
                                     {"expired", facts.isExpired},
                                     {"keyType", facts.keyType},
                                     {"keyBits", std::uint64_t{facts.keyBits}}});
    }
    return fields;
}

Report listAll(const CertListOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    DirectSession direct(session, "list the certificates", CryptokiSession::Access::kReadOnly);
    const CertificateTable table = readCertificates(session.token(), direct);
    Report report;
    std::vector<Record> rows;
    for (const TokenCertificate& row : table.rows) {
        report.output += lineOf(row, options.report.console->isOutputColoured());
        rows.push_back(fieldsOf(row));
    }
    report.fields = {{"certificates", rows}};
    if (table.hidden > 0) {
        report.note = "zrkey: certificates that are not shown: " + std::to_string(table.hidden) +
                      "; the list of the object model ends at one without an ID\n";
    }
    return report;
}

}  // namespace

void addCertListCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "cert list", listAll);
    addTokenOptions(command, *options);
    addPinOptions(command, options->pin);
}

}  // namespace zr::host
