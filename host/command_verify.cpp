// zrkey verify: checks a signature with the public key of a certificate.
#include "certificates.h"
#include "data_input.h"
#include "key_command.h"

namespace zr::host {
namespace {

struct VerifyOptions : KeyOptions {
    std::string signature;
};

Result verify(const VerifyOptions& options) {
    checkStreams(options, {options.input, options.signature});
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    Variant data;
    Variant signature;
    readData(options.input, data);
    readData(options.signature, signature);
    const TokenSession session(options);
    session.login(pin);
    const ChosenCertificate chosen = openCertificate(session.token(), options.certificate);
    const HRESULT result =
        session->VerifyData(data, chosen.certificate.get(), Text(kSignAlgorithm).get(), signature);
    const std::string asked = "verify the signature by the key of " + inQuotes(chosen.name);
    if (result == kLoginNeeded) {
        throw refused(kExitLoginNeeded, asked, result, "log in for it: give --pin");
    }
    if (FAILED(result)) {
        throw refused(kExitNotVerified, asked, result,
                      "data or signature differ from what was signed, or the token lacks the "
                      "public key");
    }
    return {
        "verified by the key of " + inQuotes(chosen.name) + '\n',
        {{"verified", true}, {"algorithm", std::string(kSignAlgorithm)}, {"name", chosen.name}}};
}

}  // namespace

void addVerifyCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "verify", "Checks a signature by SHA-1 with RSA", verify);
    addKeyOptions(*command, *options);
    command->add_option("--signature", options->signature, "The file of the raw signature")
        ->type_name("FILE")
        ->required();
}

}  // namespace zr::host
