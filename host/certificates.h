// The certificates of a token: their names, and the one that is meant.
#pragma once

#include <string>
#include <vector>

#include "library.h"
#include "token_options.h"

namespace zr::host {

/// The names in the token's order.
std::vector<std::string> listCertificates(IKeyObject& token);

struct ChosenCertificate {
    std::string name;
    ComRef<IKeyCertificate> certificate;
};

/// Throws a Failure when there is none, or more than one that could be meant: the library finds a
/// certificate and its keys by the name alone.
ChosenCertificate openCertificate(IKeyObject& token, const CertificateChoice& choice);

}  // namespace zr::host
