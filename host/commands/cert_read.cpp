// zrkey cert read: a certificate as it is stored on the token.
#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/commands/key_command.h"
#include "host/token/certificates.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct CertReadOptions : TokenOptions {
    PinOptions pin;
    CertificateChoice certificate;
    ByteOutput output;
    bool isText = false;
};

Report readCertificate(const CertReadOptions& options) {
    const OpenOutput output = openByteOutput(options.output, options.report, options.isText);
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    DirectSession direct(session, "list the certificates", CryptokiSession::Access::kReadOnly);
    const TokenCertificate chosen =
        chooseCertificate(readCertificates(session.token(), direct), options.certificate);
    Report report = byteReport("certificate", chosen.der, output, "CERTIFICATE");
    if (options.isText) {
        const std::optional<std::string> text = certificateText(chosen.der);
        if (!text) {
            throw commandFailure(kExitFailure, "show the certificate " + shownName(chosen),
                                 "it is not readable as X.509", "read it without --format text");
        }
        report.output = *text;
    }
    report.fields.push_back({"name", chosen.name});
    return report;
}

}  // namespace

void addCertReadCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "cert read", readCertificate);
    addTokenOptions(command, *options);
    addPinOptions(command, options->pin);
    addCertificateOptions(command, options->certificate);
    addByteOutput(command, options->output, &options->isText);
}

}  // namespace zr::host
