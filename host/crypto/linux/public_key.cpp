// Public keys by libcrypto.
#include "host/crypto/public_key.h"

#include <openssl/err.h>
#include <openssl/objects.h>
#include <openssl/rsa.h>

#include "host/crypto/linux/libcrypto_objects.h"

namespace zr::host {
namespace {

const unsigned char* bytesOf(std::string_view bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

const EVP_MD* signedHash(SignatureAlgorithm algorithm) {
    switch (hashOf(algorithm)) {
        case HashKind::kSha1:
            return EVP_sha1();
        case HashKind::kSha384:
            return EVP_sha384();
        case HashKind::kSha512:
            return EVP_sha512();
        default:
            return EVP_sha256();
    }
}

bool setPadding(EVP_PKEY_CTX* context, SignatureAlgorithm algorithm) {
    switch (algorithm) {
        case SignatureAlgorithm::kEcdsaSha256:
        case SignatureAlgorithm::kEcdsaSha384:
            return true;
        case SignatureAlgorithm::kRsaPssSha256:
            return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PSS_PADDING) > 0 &&
                   EVP_PKEY_CTX_set_rsa_pss_saltlen(context, RSA_PSS_SALTLEN_DIGEST) > 0;
        default:
            return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PADDING) > 0;
    }
}

bool isEcdsa(SignatureAlgorithm algorithm) {
    return algorithm == SignatureAlgorithm::kEcdsaSha256 ||
           algorithm == SignatureAlgorithm::kEcdsaSha384;
}

}  // namespace

struct PublicKey::Key {
    KeyPtr key;
    bool isOfKind(int kind) const { return EVP_PKEY_get_base_id(key.get()) == kind; }
};

std::optional<PublicKey> PublicKey::ofCertificate(std::string_view der) {
    const CertificatePtr certificate = parseCertificate(der);
    KeyPtr key(certificate ? X509_get_pubkey(certificate.get()) : nullptr);
    ERR_clear_error();
    if (!key) {
        return std::nullopt;
    }
    return PublicKey(std::make_shared<Key>(Key{std::move(key)}));
}

std::optional<PublicKey> PublicKey::ofSubjectPublicKeyInfo(std::string_view der) {
    const unsigned char* bytes = bytesOf(der);
    KeyPtr key(d2i_PUBKEY(nullptr, &bytes, static_cast<long>(der.size())));
    ERR_clear_error();
    if (!key) {
        return std::nullopt;
    }
    return PublicKey(std::make_shared<Key>(Key{std::move(key)}));
}

std::string PublicKey::type() const {
    char identifier[80] = "";
    const ASN1_OBJECT* object = OBJ_nid2obj(EVP_PKEY_get_base_id(m_key->key.get()));
    OBJ_obj2txt(identifier, sizeof identifier, object, 1);
    return keyTypeOf(identifier);
}

unsigned PublicKey::bits() const {
    return m_key->isOfKind(EVP_PKEY_RSA) || m_key->isOfKind(EVP_PKEY_EC)
               ? static_cast<unsigned>(EVP_PKEY_get_bits(m_key->key.get()))
               : 0;
}

bool PublicKey::verify(SignatureAlgorithm algorithm, std::string_view hash,
                       std::string_view signature) const {
    if (!m_key->isOfKind(isEcdsa(algorithm) ? EVP_PKEY_EC : EVP_PKEY_RSA)) {
        return false;
    }
    const KeyContextPtr context(EVP_PKEY_CTX_new(m_key->key.get(), nullptr));
    const bool isVerified =
        context && EVP_PKEY_verify_init(context.get()) > 0 &&
        setPadding(context.get(), algorithm) &&
        EVP_PKEY_CTX_set_signature_md(context.get(), signedHash(algorithm)) > 0 &&
        EVP_PKEY_verify(context.get(), bytesOf(signature), signature.size(), bytesOf(hash),
                        hash.size()) == 1;
    ERR_clear_error();
    return isVerified;
}

}  // namespace zr::host
