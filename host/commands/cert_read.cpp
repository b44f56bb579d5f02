// zrkey cert read: a certificate as it is stored on the token.
#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/token/certificates.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct CertReadOptions : TokenOptions {
    PinOptions pin;
    CertificateChoice certificate;
    ByteOutput output;
};

Report readCertificate(const CertReadOptions& options) {
    const OpenOutput output = openByteOutput(options.output, options.report);
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    const ChosenCertificate chosen = openCertificate(session.token(), options.certificate);
    zrkey::ByteArray data;
    const HRESULT result = chosen.certificate->GetCertData(data.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "read the certificate " + inQuotes(chosen.name), result,
                             "check that the token is still connected");
    }
    Report report = byteReport("certificate", takeBytes(data), output, "CERTIFICATE");
    report.fields.push_back({"name", chosen.name});
    return report;
}

}  // namespace

void addCertReadCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "cert read", "Reads a certificate", readCertificate);
    addTokenOptions(*command, *options);
    addPinOptions(*command, options->pin);
    addCertificateOptions(*command, options->certificate);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
