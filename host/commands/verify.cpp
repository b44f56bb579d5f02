// zrkey verify: checks a signature with the public key of a certificate.
#include "host/commands/byte_arrays.h"
#include "host/commands/key_command.h"
#include "host/token/certificates.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct VerifyOptions : KeyOptions {
    std::string signature;
    ByteFormat format = ByteFormat::kRaw;
};

/// What the key in the certificate says; nullopt: it cannot be read.
using OwnAnswer = std::optional<bool>;

/// Asks the library, which uses the public key on the token, and compares the answers.
void verifyByLibrary(const TokenSession& session, const TokenCertificate& certificate,
                     const SignedData& data, const std::string& signature, const OwnAnswer& own,
                     const std::string& asked) {
    const zrkey::ComRef<IKeyCertificate> opened = openCertificate(session.token(), certificate);
    const HRESULT result = session->VerifyData(
        data.whole(), opened.get(), zrkey::Text(kSignAlgorithm).get(), zrkey::ByteArray(signature));
    if (result == kLoginNeeded) {
        throw libraryFailure(kExitLoginNeeded, asked, result, "log in first: give --pin");
    }
    if (FAILED(result) && own == true) {
        throw explainedFailure(
            kExitNotVerified, asked, result,
            {"the token does not accept the signature, but the key in the certificate does",
             "the token lacks the public key, or has that of another certificate under this ID"});
    }
    if (FAILED(result)) {
        throw libraryFailure(
            kExitNotVerified, asked, result,
            "the data or the signature was changed, or the token lacks the public key");
    }
    if (own == false) {
        throw commandFailure(
            kExitNotVerified, asked,
            "the token accepts the signature, but the key in the certificate does not",
            "the token has the public key of another certificate under this ID");
    }
}

/// Uses the answer of the key in the certificate alone.
void requireAccepted(const OwnAnswer& own, const std::string& asked) {
    if (!own) {
        throw commandFailure(kExitFailure, asked, "the certificate has no key that can be read",
                             "choose another certificate");
    }
    if (!*own) {
        throw commandFailure(kExitNotVerified, asked, "the signature is not by this key",
                             "the data or the signature was changed, or another key or another "
                             "--algorithm was used");
    }
}

/// The signature as the key in the certificate takes it.
std::string toStandardForm(const std::string& signature, bool isRaw) {
    // What is malformed does not verify.
    return isRaw ? ecdsaToDer(signature).value_or("") : signature;
}

Report verify(const VerifyOptions& options) {
    checkStreams(options.pin, {options.input, options.signature});
    const SignatureAlgorithm algorithm = algorithmOf(options);
    // The key in the certificate needs no login.
    PinEntry pin(options.pin, algorithm == kLibraryAlgorithm ? PinEntry::Need::kIfPossible
                                                             : PinEntry::Need::kOnRequest);
    SignedData data(options.input, algorithm, *options.report.console);
    const std::string signature = readSignature(options.signature, options.format);
    const TokenSession session(options);
    session.login(pin);
    DirectSession direct(session, "list the certificates", CryptokiSession::Access::kReadOnly);
    const TokenCertificate certificate =
        findCertificate(session.token(), direct, options.certificate);
    const std::string asked = "verify the signature with the key of " + shownName(certificate);
    requireKeyType(certificate, algorithm, asked);
    const OwnAnswer own = isAccepted(certificate, algorithm, data.hash(hashOf(algorithm)),
                                     toStandardForm(signature, options.isRaw));
    const bool isByLibrary = algorithm == kLibraryAlgorithm && certificate.isNameUnique;
    Report report;
    if (isByLibrary) {
        verifyByLibrary(session, certificate, data, signature, own, asked);
        report.note = own ? "" : "zrkey: the certificate has no key that can confirm it\n";
    } else {
        requireAccepted(own, asked);
    }
    report.output =
        isByLibrary ? "verified by the key of " : "verified by the key in the certificate ";
    report.output.append(shownName(certificate)).append("\n");
    report.fields = {{"verified", true},
                     {"algorithm", reportedName(algorithm)},
                     {"name", certificate.name},
                     {"key", std::string(isByLibrary ? "token" : "certificate")}};
    return report;
}

}  // namespace

void addVerifyCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "verify", verify);
    addKeyOptions(command, *options);
    addSignatureOption(command, options->signature);
    addFormatOption(command, options->format, "The format of the signature");
}

}  // namespace zr::host
