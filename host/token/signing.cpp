// Signatures beside the library's.
#include "host/token/signing.h"

#include <algorithm>
#include <vector>

#include "host/token/cryptoki_names.h"
#include "host/token/pkcs11_header.h"

namespace zr::host {
namespace {

struct NamedMechanism {
    CK_MECHANISM_TYPE type;
    const char* name;
};

struct AlgorithmRow {
    const char* name;
    SignatureAlgorithm algorithm;
    CK_KEY_TYPE keyType;
    NamedMechanism hashing;  ///< the token hashes the data
    NamedMechanism bare;     ///< the token signs a hash
};

#define ZR_MECHANISM(type) \
    { type, #type }
constexpr AlgorithmRow kAlgorithms[] = {
    {"rsa-sha1", SignatureAlgorithm::kRsaSha1, CKK_RSA, ZR_MECHANISM(CKM_SHA1_RSA_PKCS),
     ZR_MECHANISM(CKM_RSA_PKCS)},
    {"rsa-sha256", SignatureAlgorithm::kRsaSha256, CKK_RSA, ZR_MECHANISM(CKM_SHA256_RSA_PKCS),
     ZR_MECHANISM(CKM_RSA_PKCS)},
    {"rsa-sha384", SignatureAlgorithm::kRsaSha384, CKK_RSA, ZR_MECHANISM(CKM_SHA384_RSA_PKCS),
     ZR_MECHANISM(CKM_RSA_PKCS)},
    {"rsa-sha512", SignatureAlgorithm::kRsaSha512, CKK_RSA, ZR_MECHANISM(CKM_SHA512_RSA_PKCS),
     ZR_MECHANISM(CKM_RSA_PKCS)},
    {"rsa-pss-sha256", SignatureAlgorithm::kRsaPssSha256, CKK_RSA,
     ZR_MECHANISM(CKM_SHA256_RSA_PKCS_PSS), ZR_MECHANISM(CKM_RSA_PKCS_PSS)},
    {"ecdsa-sha256", SignatureAlgorithm::kEcdsaSha256, CKK_EC, ZR_MECHANISM(CKM_ECDSA_SHA256),
     ZR_MECHANISM(CKM_ECDSA)},
    {"ecdsa-sha384", SignatureAlgorithm::kEcdsaSha384, CKK_EC, ZR_MECHANISM(CKM_ECDSA_SHA384),
     ZR_MECHANISM(CKM_ECDSA)}};
#undef ZR_MECHANISM

const AlgorithmRow& rowOf(SignatureAlgorithm algorithm) {
    return *std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms),
                         [&](const AlgorithmRow& row) { return row.algorithm == algorithm; });
}

/// The length of the salt and of the hash with which PSS signatures are made.
constexpr CK_ULONG kPssSalt = 32;

std::string parameterOf(SignatureAlgorithm algorithm) {
    if (algorithm != SignatureAlgorithm::kRsaPssSha256) {
        return {};
    }
    const CK_RSA_PKCS_PSS_PARAMS parameters = {CKM_SHA256, CKG_MGF1_SHA256, kPssSalt};
    return {reinterpret_cast<const char*>(&parameters), sizeof parameters};
}

/// What stands before a hash in a PKCS #1 v1.5 signature (RFC 8017, EMSA-PKCS1-v1_5): the beginning of
/// a DigestInfo.
std::string_view digestInfoOf(HashKind kind) {
    using namespace std::string_view_literals;
    switch (kind) {
        case HashKind::kSha256:
            return "\x30\x31\x30\x0d\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x01\x05\x00\x04\x20"sv;
        case HashKind::kSha384:
            return "\x30\x41\x30\x0d\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x02\x05\x00\x04\x30"sv;
        case HashKind::kSha512:
            return "\x30\x51\x30\x0d\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x03\x05\x00\x04\x40"sv;
        default:
            return "\x30\x21\x30\x09\x06\x05\x2b\x0e\x03\x02\x1a\x05\x00\x04\x14"sv;
    }
}

std::vector<CK_OBJECT_HANDLE> findKeys(DirectSession& direct, const TokenCertificate& certificate,
                                       SignatureAlgorithm algorithm) {
    std::vector<CK_OBJECT_HANDLE> keys;
    direct.require(direct->find({numberAttribute(CKA_CLASS, CKO_PRIVATE_KEY),
                                 truthAttribute(CKA_TOKEN, true),
                                 numberAttribute(CKA_KEY_TYPE, rowOf(algorithm).keyType),
                                 {CKA_ID, certificate.id}},
                                keys));
    return keys;
}

bool asksAlways(DirectSession& direct, CK_OBJECT_HANDLE key) {
    AttributeValues values;
    direct.require(direct->read(key, {CKA_ALWAYS_AUTHENTICATE}, values));
    return isTrue(values[0]);
}

}  // namespace

bool asksForPinAlways(DirectSession& direct, const TokenCertificate& certificate,
                      SignatureAlgorithm algorithm) {
    const std::vector<CK_OBJECT_HANDLE> keys = findKeys(direct, certificate, algorithm);
    return !keys.empty() && asksAlways(direct, keys.front());
}

std::optional<SignatureAlgorithm> algorithmNamed(std::string_view name) {
    for (const AlgorithmRow& row : kAlgorithms) {
        if (name == row.name) {
            return row.algorithm;
        }
    }
    return std::nullopt;
}

std::string nameOf(SignatureAlgorithm algorithm) {
    return rowOf(algorithm).name;
}

std::string algorithmNames() {
    std::string names;
    for (const AlgorithmRow& row : kAlgorithms) {
        names.append(names.empty() ? "" : ", ").append(row.name);
    }
    return names;
}

bool isEcdsa(SignatureAlgorithm algorithm) {
    return rowOf(algorithm).keyType == CKK_EC;
}

void requireKeyType(const TokenCertificate& certificate, SignatureAlgorithm algorithm,
                    const std::string& asked) {
    const char* needed = isEcdsa(algorithm) ? "EC" : "RSA";
    if (!certificate.facts || certificate.facts->keyType == needed) {
        return;
    }
    const std::string& type = certificate.facts->keyType;
    std::string cause = "the certificate has a key of the type ";
    cause.append(type).append(", and ").append(nameOf(algorithm)).append(" needs ").append(needed);
    throw commandFailure(kExitFailure, asked, cause,
                         type == "EC"    ? "choose --algorithm ecdsa-sha256 or ecdsa-sha384"
                         : type == "RSA" ? "choose --algorithm rsa-sha256"
                                         : "choose another certificate");
}

std::optional<bool> isAccepted(const TokenCertificate& certificate, SignatureAlgorithm algorithm,
                               std::string_view hash, std::string_view signature) {
    const std::optional<PublicKey> key = PublicKey::ofCertificate(certificate.der);
    return key ? std::optional<bool>(key->verify(algorithm, hash, signature)) : std::nullopt;
}

void requireOwnSignature(const TokenCertificate& certificate, SignatureAlgorithm algorithm,
                         std::string_view hash, std::string_view signature,
                         const std::string& asked) {
    const std::optional<bool> accepted = isAccepted(certificate, algorithm, hash, signature);
    if (!accepted) {
        throw commandFailure(kExitFailure, asked,
                             "the signature cannot be checked: the certificate has no key that "
                             "can be read",
                             "nothing was written; choose another certificate");
    }
    if (!*accepted) {
        throw commandFailure(kExitFailure, asked,
                             "the signature is not by the key in the certificate: the token used "
                             "another key",
                             "nothing was written; give each certificate and its keys an ID of "
                             "their own");
    }
}

std::string toStandardForm(const std::string& signature, SignatureAlgorithm algorithm,
                           const std::string& asked) {
    if (!isEcdsa(algorithm)) {
        return signature;
    }
    const std::optional<std::string> der = ecdsaToDer(signature);
    if (!der) {
        throw commandFailure(kExitFailure, asked,
                             "the token returned " + std::to_string(signature.size()) +
                                 " bytes, which are not r and s",
                             "the module is faulty; look for a newer one");
    }
    return *der;
}

Signer::Signer(DirectSession& direct, const TokenCertificate& certificate,
               SignatureAlgorithm algorithm, const Pin* pin)
    : m_direct(direct), m_algorithm(algorithm), m_pin(pin), m_hash(hashOf(algorithm)) {
    if (certificate.facts) {
        m_keyBits = certificate.facts->keyBits;
    }
    findKey(certificate);
    findMechanism();
    if (m_tokenHashes) {
        begin();
    }
}

void Signer::findKey(const TokenCertificate& certificate) {
    const std::vector<CK_OBJECT_HANDLE> keys = findKeys(m_direct, certificate, m_algorithm);
    if (keys.empty() && !m_pin) {
        throw commandFailure(kExitLoginNeeded, m_direct.asked(),
                             "the token shows no private key with the ID of the certificate",
                             "log in first: give --pin");
    }
    if (keys.empty()) {
        throw commandFailure(kExitFailure, m_direct.asked(),
                             "the token has no private key with the ID of the certificate",
                             "choose another certificate with --cert");
    }
    // The check of the signature shows whether it is the right one.
    m_key = keys.front();
    m_asksAlways = asksAlways(m_direct, m_key);
    if (m_asksAlways && !m_pin) {
        throw commandFailure(kExitLoginNeeded, m_direct.asked(),
                             "the key asks for the PIN at each use", "give --pin");
    }
}

void Signer::findMechanism() {
    const AlgorithmRow& row = rowOf(m_algorithm);
    std::vector<CK_MECHANISM_TYPE> mechanisms;
    const CK_RV result = m_direct.module().listMechanisms(m_direct.slot(), mechanisms);
    if (result != CKR_OK) {
        throw callFailure(m_direct.asked(), "C_GetMechanismList", result);
    }
    const auto canSign = [&](CK_MECHANISM_TYPE type) {
        MechanismFacts facts;
        return std::find(mechanisms.begin(), mechanisms.end(), type) != mechanisms.end() &&
               m_direct.module().readMechanism(m_direct.slot(), type, facts) == CKR_OK &&
               (facts.flags & CKF_SIGN) != 0;
    };
    m_tokenHashes = canSign(row.hashing.type);
    if (!m_tokenHashes && !canSign(row.bare.type)) {
        std::string cause = "the token signs neither with ";
        cause.append(row.hashing.name).append(" nor with ").append(row.bare.name);
        throw commandFailure(kExitFailure, m_direct.asked(), cause, "choose another --algorithm");
    }
    m_mechanism.type = m_tokenHashes ? row.hashing.type : row.bare.type;
    m_mechanism.parameter = parameterOf(m_algorithm);
}

void Signer::begin() {
    m_direct.require(m_direct->signInit(m_mechanism, m_key));
    if (!m_asksAlways) {
        return;
    }
    const CK_RV result = m_direct->login(CKU_CONTEXT_SPECIFIC, *m_pin);
    if (result == CKR_PIN_INCORRECT || result == CKR_PIN_LOCKED) {
        throw commandFailure(
            result == CKR_PIN_LOCKED ? kExitPinLocked : kExitLoginRefused, m_direct.asked(),
            "the key asks for a PIN at each use, and the token refused this one: " +
                resultText(result),
            "the key may have a PIN of its own, which this command cannot give");
    }
    m_direct.require(result);
}

void Signer::add(std::string_view piece) {
    m_hash.add(piece);
    if (m_tokenHashes && !piece.empty()) {
        m_direct.require(m_direct->signUpdate(piece));
    }
}

std::string Signer::finish() {
    m_hashed = m_hash.finish();
    std::string signature;
    if (m_tokenHashes) {
        m_direct.require(m_direct->signFinal(signature));
        return signature;
    }
    std::string input = m_hashed;
    if (m_mechanism.type == CKM_RSA_PKCS) {
        input.insert(0, digestInfoOf(hashOf(m_algorithm)));
    } else if (m_mechanism.type == CKM_ECDSA && m_keyBits > 0) {
        // ECDSA uses as many bytes of a hash as the curve has; not every token cuts by itself.
        input.resize(std::min<std::size_t>(input.size(), (m_keyBits + 7) / 8));
    }
    begin();
    m_direct.require(m_direct->sign(input, signature));
    return signature;
}

std::string signWhole(DirectSession& direct, const TokenCertificate& certificate,
                      SignatureAlgorithm algorithm, std::string_view data) {
    Signer signer(direct, certificate, algorithm, nullptr);
    signer.add(data);
    const std::string signature = toStandardForm(signer.finish(), algorithm, direct.asked());
    requireOwnSignature(certificate, algorithm, signer.hash(), signature, direct.asked());
    return signature;
}

}  // namespace zr::host
