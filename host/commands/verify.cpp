// zrkey verify: checks a signature with the public key of a certificate.
#include "host/commands/byte_arrays.h"
#include "host/commands/key_command.h"
#include "host/output/printable.h"
#include "host/token/certificates.h"

namespace zr::host {
namespace {

struct VerifyOptions : KeyOptions {
    std::string signature;
    ByteFormat format = ByteFormat::kRaw;
};

Report verify(const VerifyOptions& options) {
    checkStreams(options, {options.input, options.signature});
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const zrkey::ByteArray data = readInput(options.input);
    const zrkey::ByteArray signature = readSignature(options.signature, options.format);
    const TokenSession session(options);
    session.login(pin);
    const ChosenCertificate chosen = openCertificate(session.token(), options.certificate);
    const HRESULT result = session->VerifyData(data, chosen.certificate.get(),
                                               zrkey::Text(kSignAlgorithm).get(), signature);
    const std::string asked = "verify the signature with the key of " + inQuotes(chosen.name);
    if (result == kLoginNeeded) {
        throw libraryFailure(kExitLoginNeeded, asked, result, "log in first: give --pin");
    }
    if (FAILED(result)) {
        throw libraryFailure(
            kExitNotVerified, asked, result,
            "the data or the signature was changed, or the token lacks the public key");
    }
    return {
        "verified by the key of " + inQuotes(chosen.name) + '\n',
        {{"verified", true}, {"algorithm", std::string(kSignAlgorithm)}, {"name", chosen.name}}};
}

}  // namespace

void addVerifyCommand(CLI::App& parent, Action& action) {
    const auto [command, options] = addCommand(
        parent, action, "verify", "Verifies a signature made with RSA and SHA-1", verify);
    addKeyOptions(*command, *options);
    addSignatureOption(*command, options->signature);
    addFormatOption(*command, options->format, "The format of the signature");
}

}  // namespace zr::host
