// The certificates of a token, in the order of the object model's containers.
#pragma once

#include <zrkey/zrkey.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/crypto/certificate_facts.h"
#include "host/token/direct_session.h"
#include "host/token/token_options.h"

namespace zr::host {

struct TokenCertificate {
    std::size_t index = 0;
    std::string name;   ///< of the container: the ID as text, up to its first zero byte
    std::string id;     ///< the bytes of CKA_ID
    std::string label;  ///< CKA_LABEL; may be empty
    std::string der;    ///< CKA_VALUE; may be empty
    std::optional<CertificateFacts> facts;  ///< nullopt: not readable as X.509
    /// Whether the library finds the keys of this certificate: it looks for the name alone, of at
    /// most 127 bytes, and takes the first keys that have it.
    bool isNameUnique = true;
};

struct CertificateTable {
    std::vector<TokenCertificate> rows;
    /// Certificates behind one without a CKA_ID, where the object model's list ends.
    std::size_t hidden = 0;
};

/// Reads the certificates in one walk. Throws a Failure when the token cannot be read, and when the
/// library lists others: the content of the token changed meanwhile.
CertificateTable readCertificates(IKeyObject& token, DirectSession& direct);

/// The certificate that matches. Throws a Failure when none does, or several do.
TokenCertificate chooseCertificate(const CertificateTable& table, const CertificateChoice& choice);

/// The same in one walk over the IDs, without a list of the library. When the IDs do not decide which
/// certificate matches, it reads the table; a Failure shows the certificates in it.
TokenCertificate findCertificate(IKeyObject& token, DirectSession& direct,
                                 const CertificateChoice& choice);

/// "id:6f6e65", as --cert takes it.
std::string idText(const TokenCertificate& certificate);

/// A certificate as an argument of the library's members. One whose name is not the text of its ID is
/// opened in the library; throws a Failure when it cannot be, or when another certificate has taken
/// its place.
zrkey::ComRef<IKeyCertificate> openCertificate(IKeyObject& token,
                                               const TokenCertificate& certificate);

}  // namespace zr::host
