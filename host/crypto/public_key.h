// Public keys, and the signatures that they verify; by the system's library.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/crypto/hash.h"

namespace zr::host {

enum class SignatureAlgorithm {
    kRsaSha1,
    kRsaSha256,
    kRsaSha384,
    kRsaSha512,
    kRsaPssSha256,  ///< MGF1 with SHA-256, and a salt of 32 bytes
    kEcdsaSha256,
    kEcdsaSha384
};

HashKind hashOf(SignatureAlgorithm algorithm);

/// "RSA" or "EC", else the usual name of the algorithm, else its object identifier: "1.2.3".
std::string keyTypeOf(std::string_view objectIdentifier);

class PublicKey {
public:
    /// @return nullopt when it is not a certificate, or the system does not know this kind of key.
    static std::optional<PublicKey> ofCertificate(std::string_view der);
    static std::optional<PublicKey> ofSubjectPublicKeyInfo(std::string_view der);

    /// See keyTypeOf.
    std::string type() const;
    /// The size of an RSA key's modulus or of the field of an EC key's curve; 0 for other keys.
    unsigned bits() const;
    /// @param hash       of the signed data.
    /// @param signature  PKCS #1 bytes for RSA; DER for ECDSA.
    /// @return false too when the key is of another kind than the algorithm.
    bool verify(SignatureAlgorithm algorithm, std::string_view hash,
                std::string_view signature) const;

private:
    struct Key;
    explicit PublicKey(std::shared_ptr<const Key> key);
    std::shared_ptr<const Key> m_key;
};

/// The DER form of an ECDSA signature (RFC 3279, Ecdsa-Sig-Value).
/// @param rawRAndS  r followed by s, of equal length.
/// @return nullopt when they are empty or of different lengths.
std::optional<std::string> ecdsaToDer(std::string_view rawRAndS);

/// r and s of a signature in DER.
/// @param coordinateSize  the length of each.
/// @return nullopt when it is malformed, or a number is longer.
std::optional<std::string> ecdsaFromDer(std::string_view der, std::size_t coordinateSize);

}  // namespace zr::host
