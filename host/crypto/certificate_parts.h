// The parts of a certificate, as the target's library reads them. Inner to host/crypto.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zr::host {

/// One attribute of a name.
struct NamePart {
    std::string type;   ///< object identifier: "2.5.4.3"
    std::string value;  ///< UTF-8; "#" and the DER in hex when it is no text
    bool isText = true;
    bool isJoined = false;  ///< it belongs to the same level as the one before
};

using NameParts = std::vector<NamePart>;

struct CertificateParts {
    std::string der;  ///< without bytes after it
    NameParts subject;
    NameParts issuer;
    std::string serialNumber;  ///< bytes, the highest first
    std::string notBefore;     ///< "2027-11-22T10:00:00Z"
    std::string notAfter;
    std::string keyAlgorithm;          ///< object identifier
    std::optional<unsigned> keyUsage;  ///< bits of RFC 5280, digitalSignature is 0x80
};

/// @return nullopt when the bytes are no certificate.
std::optional<CertificateParts> readParts(std::string_view der);

/// "2027-11-22T10:00:00Z".
std::string timeText(int year, int month, int day, int hour, int minute, int second);

}  // namespace zr::host
