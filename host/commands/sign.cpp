// zrkey sign: signs data with the private key of a certificate.
#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/commands/key_command.h"
#include "host/output/printable.h"
#include "host/token/certificates.h"

namespace zr::host {
namespace {

struct SignOptions : KeyOptions {
    ByteOutput output;
};

Report sign(const SignOptions& options) {
    checkStreams(options, {options.input});
    const OpenOutput output = openByteOutput(options.output, options.report);
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const zrkey::ByteArray data = readInput(options.input);
    const TokenSession session(options);
    session.login(pin);
    const ChosenCertificate chosen = openCertificate(session.token(), options.certificate);
    zrkey::ByteArray signature;
    const HRESULT result = session->SignData(zrkey::Text(kSignAlgorithm).get(), data,
                                             chosen.certificate.get(), signature.receive());
    const std::string asked = "sign with the key of " + inQuotes(chosen.name);
    if (result == kLoginNeeded) {
        throw libraryFailure(kExitLoginNeeded, asked, result, "log in first: give --pin");
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result,
                             "check that the token has its private RSA key");
    }
    Report report = byteReport("signature", takeBytes(signature), output, kSignatureLabel);
    report.fields.push_back({"algorithm", std::string(kSignAlgorithm)});
    report.fields.push_back({"name", chosen.name});
    return report;
}

}  // namespace

void addSignCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "sign", "Signs data with RSA and SHA-1", sign);
    addKeyOptions(*command, *options);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
