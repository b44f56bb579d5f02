// Signatures beside the library's: by the command's own session, with any of these algorithms.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/crypto/hash.h"
#include "host/crypto/public_key.h"
#include "host/token/certificates.h"
#include "host/token/direct_session.h"

namespace zr::host {

/// How the command line names algorithms: "rsa-sha256".
std::optional<SignatureAlgorithm> algorithmNamed(std::string_view name);
std::string nameOf(SignatureAlgorithm algorithm);
/// All of the names: "rsa-sha1, rsa-sha256, ...".
std::string algorithmNames();
/// Whether the signatures are pairs of numbers, in DER or raw.
bool isEcdsa(SignatureAlgorithm algorithm);

/// The algorithm that is meant when none is named. The library signs with it, as SHA1WithRSA.
inline constexpr SignatureAlgorithm kLibraryAlgorithm = SignatureAlgorithm::kRsaSha1;

/// Throws a Failure when the key of a certificate is of another kind than the algorithm.
void requireKeyType(const TokenCertificate& certificate, SignatureAlgorithm algorithm,
                    const std::string& asked);

/// Whether the key in the certificate accepts a signature; nullopt: the key cannot be read.
/// @param hash       of the data.
/// @param signature  in DER for ECDSA.
std::optional<bool> isAccepted(const TokenCertificate& certificate, SignatureAlgorithm algorithm,
                               std::string_view hash, std::string_view signature);

/// Throws a Failure when a new signature is not by the key of its certificate, or when the key in
/// the certificate cannot be read.
void requireOwnSignature(const TokenCertificate& certificate, SignatureAlgorithm algorithm,
                         std::string_view hash, std::string_view signature,
                         const std::string& asked);

/// The signature in DER for ECDSA, as it is for RSA. Throws a Failure when it is malformed.
/// @param signature  as the token makes it.
std::string toStandardForm(const std::string& signature, SignatureAlgorithm algorithm,
                           const std::string& asked);

/// Whether the private key of a certificate asks for the PIN at each use (CKA_ALWAYS_AUTHENTICATE).
/// false too when there is no such key.
bool asksForPinAlways(DirectSession& direct, const TokenCertificate& certificate,
                      SignatureAlgorithm algorithm);

/// Makes one signature of data that need not fit into memory. The token hashes where it can.
class Signer {
public:
    /// Finds the private key by the CKA_ID of the certificate and begins. Throws a Failure.
    /// @param direct  borrowed; it makes no other signature meanwhile.
    /// @param pin     for keys that ask for it at each use; null: there is none.
    Signer(DirectSession& direct, const TokenCertificate& certificate, SignatureAlgorithm algorithm,
           const Pin* pin);

    void add(std::string_view piece);
    /// The signature: PKCS #1 bytes for RSA; r followed by s, of equal length, for ECDSA.
    std::string finish();
    /// The hash of the data, after finish.
    const std::string& hash() const { return m_hashed; }

private:
    void findKey(const TokenCertificate& certificate);
    void findMechanism();
    void begin();

    DirectSession& m_direct;
    SignatureAlgorithm m_algorithm;
    const Pin* m_pin;
    CK_OBJECT_HANDLE m_key = 0;
    bool m_asksAlways = false;  ///< CKA_ALWAYS_AUTHENTICATE
    bool m_tokenHashes = false;
    unsigned m_keyBits = 0;
    Mechanism m_mechanism;
    Hash m_hash;
    std::string m_hashed;
};

/// Signs data in memory and checks the signature. Throws a Failure.
/// @return the signature, in DER for ECDSA.
std::string signWhole(DirectSession& direct, const TokenCertificate& certificate,
                      SignatureAlgorithm algorithm, std::string_view data);

}  // namespace zr::host
