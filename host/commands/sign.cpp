// zrkey sign: signs data with the private key of a certificate.
#include <CLI/CLI.hpp>

#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/commands/key_command.h"
#include "host/output/printable.h"
#include "host/system/interruption.h"
#include "host/token/certificates.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct SignOptions : KeyOptions {
    ByteOutput output;
};

struct Signature {
    std::string bytes;  ///< as the token makes it
    std::string hash;   ///< of the data
};

Signature signByLibrary(const TokenSession& session, DirectSession& direct,
                        const TokenCertificate& certificate, SignedData& data) {
    const std::string& asked = direct.asked();
    const zrkey::ComRef<IKeyCertificate> opened = openCertificate(session.token(), certificate);
    zrkey::ByteArray signature;
    const HRESULT result = session->SignData(zrkey::Text(kSignAlgorithm).get(), data.whole(),
                                             opened.get(), signature.receive());
    if (result == kLoginNeeded) {
        throw libraryFailure(kExitLoginNeeded, asked, result, "log in first: give --pin");
    }
    if (FAILED(result) && asksForPinAlways(direct, certificate, kLibraryAlgorithm)) {
        throw explainedFailure(kExitFailure, asked, result,
                               {"the key asks for the PIN at each use, which the object model does "
                                "not do",
                                "choose another --algorithm: rsa-sha256"});
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result,
                             "check that the token has its private RSA key");
    }
    return {takeBytes(signature), data.hash(hashOf(kLibraryAlgorithm))};
}

Signature signDirectly(DirectSession& direct, const TokenCertificate& certificate,
                       SignatureAlgorithm algorithm, const Pin* pin, SignedData& data) {
    Signer signer(direct, certificate, algorithm, pin);
    data.forEachPiece([&](std::string_view piece) {
        stopIfInterrupted();
        signer.add(piece);
    });
    stopIfInterrupted();
    std::string bytes = signer.finish();
    return {std::move(bytes), signer.hash()};
}

Report sign(const SignOptions& options) {
    checkStreams(options.pin, {options.input});
    const SignatureAlgorithm algorithm = algorithmOf(options);
    const OpenOutput output = openByteOutput(options.output, options.report);
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    SignedData data(options.input, algorithm, *options.report.console);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    DirectSession direct(session, "list the certificates", CryptokiSession::Access::kReadOnly);
    const TokenCertificate certificate =
        findCertificate(session.token(), direct, options.certificate);
    const std::string asked = "sign with the key of " + shownName(certificate);
    direct.setAsked(asked);
    requireKeyType(certificate, algorithm, asked);
    // The library finds a key by the name of its certificate alone.
    const Signature signature =
        algorithm == kLibraryAlgorithm && certificate.isNameUnique
            ? signByLibrary(session, direct, certificate, data)
            : signDirectly(direct, certificate, algorithm,
                           isLoggedIn ? pin.get(session.row()) : nullptr, data);
    const std::string standard = toStandardForm(signature.bytes, algorithm, asked);
    requireOwnSignature(certificate, algorithm, signature.hash, standard, asked);
    Report report = byteReport("signature", options.isRaw ? signature.bytes : standard, output,
                               kSignatureLabel);
    report.fields.push_back({"algorithm", reportedName(algorithm)});
    report.fields.push_back({"name", certificate.name});
    if (!options.algorithm && options.report.console->isErrorTerminal()) {
        report.note = "zrkey: signed with SHA-1; for new uses choose another --algorithm\n";
    }
    return report;
}

}  // namespace

void addSignCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "sign", sign);
    addKeyOptions(command, *options);
    addByteOutput(command, options->output);
}

}  // namespace zr::host
