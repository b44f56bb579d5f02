// Public keys: what both targets know of their algorithms.
#include "host/crypto/public_key.h"

#include <utility>

namespace zr::host {
namespace {

constexpr std::pair<std::string_view, std::string_view> kKeyTypes[] = {
    {"1.2.840.113549.1.1.1", "RSA"}, {"1.2.840.113549.1.1.10", "RSA-PSS"},
    {"1.2.840.10045.2.1", "EC"},     {"1.2.840.10040.4.1", "DSA"},
    {"1.3.101.112", "Ed25519"},      {"1.3.101.113", "Ed448"}};

}  // namespace

HashKind hashOf(SignatureAlgorithm algorithm) {
    switch (algorithm) {
        case SignatureAlgorithm::kRsaSha1:
            return HashKind::kSha1;
        case SignatureAlgorithm::kRsaSha384:
        case SignatureAlgorithm::kEcdsaSha384:
            return HashKind::kSha384;
        case SignatureAlgorithm::kRsaSha512:
            return HashKind::kSha512;
        case SignatureAlgorithm::kRsaSha256:
        case SignatureAlgorithm::kRsaPssSha256:
        case SignatureAlgorithm::kEcdsaSha256:
            break;
    }
    return HashKind::kSha256;
}

std::string keyTypeOf(std::string_view objectIdentifier) {
    for (const auto& [known, name] : kKeyTypes) {
        if (known == objectIdentifier) {
            return std::string(name);
        }
    }
    return std::string(objectIdentifier);
}

PublicKey::PublicKey(std::shared_ptr<const Key> key) : m_key(std::move(key)) {}

}  // namespace zr::host
