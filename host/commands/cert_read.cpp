// zrkey cert read: a certificate as the token holds it.
#include "certificates.h"
#include "command_frame.h"
#include "token_session.h"
#include "variant.h"

namespace zr::host {
namespace {

struct CertReadOptions : TokenOptions {
    PinOptions pin;
    CertificateChoice certificate;
    ByteOutput output;
};

Result readCertificate(const CertReadOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    const ChosenCertificate chosen = openCertificate(session.token(), options.certificate);
    Variant data;
    const HRESULT result = chosen.certificate->GetCertData(data.receive());
    if (FAILED(result)) {
        throw refused(kExitFailure, "read the certificate " + inQuotes(chosen.name), result,
                      "look whether the token is still connected");
    }
    Result output = byteResult("certificate", data.bytes(), options.output, "CERTIFICATE");
    output.fields.push_back({"name", chosen.name});
    return output;
}

}  // namespace

void addCertReadCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "cert read", "Writes a certificate out", readCertificate);
    addTokenOptions(*command, *options);
    addPinOptions(*command, options->pin);
    addCertificateOptions(*command, options->certificate);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
