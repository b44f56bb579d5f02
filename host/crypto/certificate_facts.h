// What a certificate says, for people; read by the system's library.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

/// Texts are UTF-8 as the certificate has them: show them with printable.
struct CertificateFacts {
    std::string subject;  ///< "C=DE, O=Example, CN=Erika", in the order of the certificate
    std::string issuer;
    std::string commonName;    ///< the subject's last one, without escapes; may be empty
    std::string serialNumber;  ///< hex in lower case
    std::string notBefore;     ///< "2027-11-22T10:00:00Z"
    std::string notAfter;
    bool isExpired = false;
    std::string keyType;   ///< see keyTypeOf
    unsigned keyBits = 0;  ///< see PublicKey::bits; 0 too when the system does not know the key
};

/// @return nullopt when the bytes are no certificate. Bytes after it are ignored.
std::optional<CertificateFacts> readFacts(std::string_view der);

/// The facts in lines "name:", a tab, the value, and with them key usage and fingerprints. Safe to
/// show.
/// @return nullopt when the bytes are no certificate.
std::optional<std::string> certificateText(std::string_view der);

}  // namespace zr::host
