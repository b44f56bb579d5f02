// zrkey sign: signs bytes with the private key of a certificate.
#include "certificates.h"
#include "command_frame.h"
#include "data_input.h"
#include "key_command.h"

namespace zr::host {
namespace {

struct SignOptions : KeyOptions {
    ByteOutput output;
};

Result sign(const SignOptions& options) {
    checkStreams(options, {options.input});
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    Variant data;
    readData(options.input, data);
    const TokenSession session(options);
    session.login(pin);
    const ChosenCertificate chosen = openCertificate(session.token(), options.certificate);
    Variant signature;
    const HRESULT result = session->SignData(Text(kSignAlgorithm).get(), data,
                                             chosen.certificate.get(), signature.receive());
    const std::string asked = "sign with the key of " + inQuotes(chosen.name);
    if (result == kLoginNeeded) {
        throw refused(kExitLoginNeeded, asked, result, "log in for it: give --pin");
    }
    if (FAILED(result)) {
        throw refused(kExitFailure, asked, result,
                      "look whether the token holds its private RSA key");
    }
    Result output = byteResult("signature", signature.bytes(), options.output, "SIGNATURE");
    output.fields.push_back({"algorithm", std::string(kSignAlgorithm)});
    output.fields.push_back({"name", chosen.name});
    return output;
}

}  // namespace

void addSignCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "sign", "Signs bytes by SHA-1 with RSA", sign);
    addKeyOptions(*command, *options);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
