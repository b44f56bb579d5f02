// What sign and verify share.
#include "host/commands/key_command.h"

#include <utf8cpp/utf8.h>
#include <CLI/CLI.hpp>

#include <algorithm>

#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/system.h"

namespace zr::host {

void addKeyOptions(CLI::App& command, KeyOptions& options) {
    addTokenOptions(command, options);
    addPinOptions(command, options.pin);
    addCertificateOptions(command, options.certificate);
    addAlgorithmOption(command, options.algorithm);
    command.add_flag("--raw", options.isRaw,
                     "An ECDSA signature is r followed by s, of equal length, instead of DER");
    addInputOption(command, options.input);
}

SignatureAlgorithm algorithmOf(const KeyOptions& options) {
    const SignatureAlgorithm algorithm = options.algorithm.value_or(kLibraryAlgorithm);
    if (options.isRaw && !isEcdsa(algorithm)) {
        throw commandFailure(kExitUsage, "use --raw", "it is for the algorithms ecdsa-... alone",
                             "give --algorithm ecdsa-sha256, or leave --raw out");
    }
    return algorithm;
}

std::string reportedName(SignatureAlgorithm algorithm) {
    return algorithm == kLibraryAlgorithm ? kSignAlgorithm : nameOf(algorithm);
}

void checkStreams(const PinOptions& pin, const std::vector<std::string>& inputs) {
    const std::optional<PinSource>& source = pin.source;
    const bool isPinInput = source && source->kind == PinSource::Kind::kDescriptor &&
                            source->descriptor == kStandardInput;
    const auto uses = std::count(inputs.begin(), inputs.end(), kStandardStream);
    if (uses + (isPinInput ? 1 : 0) > 1) {
        throw commandFailure(kExitUsage, "read standard input twice",
                             "its data can be read only once",
                             "name a file with -i, or give another source for the PIN");
    }
}

SignedData::SignedData(const std::string& path, SignatureAlgorithm algorithm, Console& console) {
    if (algorithm == kLibraryAlgorithm) {
        m_whole = readInput(path);
    } else {
        m_pieces.emplace(path, "read " + placeOf(path), console);
    }
}

void SignedData::forEachPiece(const std::function<void(std::string_view)>& take) {
    if (m_whole) {
        take(takeBytes(*m_whole));
    } else {
        m_pieces->forEach(take);
    }
}

std::string SignedData::hash(HashKind kind) {
    Hash hash(kind);
    forEachPiece([&](std::string_view piece) { hash.add(piece); });
    return hash.finish();
}

std::string shownName(const TokenCertificate& certificate) {
    const bool isText = !certificate.name.empty() && utf8::is_valid(certificate.id) &&
                        certificate.id.find('\0') == std::string::npos;
    return isText ? inQuotes(certificate.name) : idText(certificate);
}

}  // namespace zr::host
