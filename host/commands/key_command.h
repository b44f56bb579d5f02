// What sign and verify share.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/output/console.h"
#include "host/token/signing.h"
#include "host/token/token_session.h"

namespace zr::host {

/// The library signs and verifies with this algorithm, whatever it is asked for.
inline constexpr const char* kSignAlgorithm = "SHA1WithRSA";

/// The library's result without a login.
inline constexpr HRESULT kLoginNeeded = RPC_E_CANTCALLOUT_INEXTERNALCALL;

struct KeyOptions : TokenOptions {
    PinOptions pin;
    CertificateChoice certificate;
    std::optional<SignatureAlgorithm> algorithm;
    bool isRaw = false;  ///< an ECDSA signature is r and s, not DER
    std::string input = "-";
};

void addKeyOptions(CLI::App& command, KeyOptions& options);

/// The algorithm of the options. Throws a Failure when --raw does not fit it.
SignatureAlgorithm algorithmOf(const KeyOptions& options);

/// How reports name it: the library's by the library's name.
std::string reportedName(SignatureAlgorithm algorithm);

/// Throws a Failure when more than one of the PIN and the inputs is to be read from standard input.
void checkStreams(const PinOptions& pin, const std::vector<std::string>& inputs);

/// Reads the data of a signature: piece by piece, or as a whole for the library.
class SignedData {
public:
    /// Opens the file, or reads it as a whole. Throws a Failure when it cannot.
    /// @param console  shows the progress.
    SignedData(const std::string& path, SignatureAlgorithm algorithm, Console& console);

    /// The data for a call of the library; it was read as a whole.
    const zrkey::ByteArray& whole() const { return m_whole.value(); }
    /// Takes all data, once. Throws a Failure when it cannot be read.
    void forEachPiece(const std::function<void(std::string_view)>& take);
    /// The hash of all data.
    std::string hash(HashKind kind);

private:
    std::optional<zrkey::ByteArray> m_whole;
    std::optional<InputPieces> m_pieces;
};

/// How messages name a certificate: by its name, or by its ID when the name is not text.
std::string shownName(const TokenCertificate& certificate);

}  // namespace zr::host
