// The certificates of a token: their names, and the choice of one.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>
#include <vector>

#include "host/token/token_options.h"

namespace zr::host {

/// The names, in the token's order.
std::vector<std::string> listCertificates(IKeyObject& token);

struct ChosenCertificate {
    std::string name;
    zrkey::ComRef<IKeyCertificate> certificate;
};

/// Opens the chosen certificate. Throws a Failure when none matches, when several have its name, or
/// when the token changes meanwhile: the library uses the keys of the first certificate with an ID,
/// which need not be the chosen one.
ChosenCertificate openCertificate(IKeyObject& token, const CertificateChoice& choice);

}  // namespace zr::host
