// Public keys by crypt32, which reads them, and bcrypt.
#include "host/crypto/public_key.h"

#include <vector>

#include "host/crypto/windows/bcrypt_names.h"
#include "host/crypto/windows/crypt32_objects.h"

namespace zr::host {
namespace {

constexpr const char* kRsa = "RSA";
constexpr const char* kEllipticCurve = "EC";

/// The public key as a blob of bcrypt; empty when it has another kind.
std::vector<BYTE> exportKey(BCRYPT_KEY_HANDLE key, const wchar_t* kind) {
    ULONG size = 0;
    if (!BCRYPT_SUCCESS(BCryptExportKey(key, nullptr, kind, nullptr, 0, &size, 0))) {
        return {};
    }
    std::vector<BYTE> blob(size);
    return BCRYPT_SUCCESS(BCryptExportKey(key, nullptr, kind, blob.data(), size, &size, 0))
               ? blob
               : std::vector<BYTE>();
}

/// bcrypt's property for the size of a key is not there under Wine.
unsigned bitsOfKey(BCRYPT_KEY_HANDLE key, const std::string& type) {
    if (type == kRsa) {
        const std::vector<BYTE> blob = exportKey(key, BCRYPT_RSAPUBLIC_BLOB);
        return blob.size() < sizeof(BCRYPT_RSAKEY_BLOB)
                   ? 0
                   : reinterpret_cast<const BCRYPT_RSAKEY_BLOB*>(blob.data())->BitLength;
    }
    const std::vector<BYTE> blob = exportKey(key, BCRYPT_ECCPUBLIC_BLOB);
    if (blob.size() < sizeof(BCRYPT_ECCKEY_BLOB)) {
        return 0;
    }
    constexpr unsigned kRoundedUp = 528;
    const unsigned bits = 8U * reinterpret_cast<const BCRYPT_ECCKEY_BLOB*>(blob.data())->cbKey;
    // The one usual curve whose size is not a multiple of 8.
    return bits == kRoundedUp ? 521 : bits;
}

}  // namespace

struct PublicKey::Key {
    KeyPtr key;
    std::string type;
    unsigned bits;

    /// @return null when the system does not know this kind of key.
    static std::shared_ptr<const Key> import(CERT_PUBLIC_KEY_INFO& info) {
        BCRYPT_KEY_HANDLE handle = nullptr;
        if (!CryptImportPublicKeyInfoEx2(X509_ASN_ENCODING, &info,
                                         CRYPT_OID_INFO_PUBKEY_SIGN_KEY_FLAG, nullptr, &handle)) {
            return nullptr;
        }
        KeyPtr key(handle);
        std::string type = keyTypeOf(info.Algorithm.pszObjId);
        const unsigned bits = type == kRsa || type == kEllipticCurve ? bitsOfKey(handle, type) : 0;
        return std::make_shared<Key>(Key{std::move(key), std::move(type), bits});
    }
};

std::optional<PublicKey> PublicKey::ofCertificate(std::string_view der) {
    const CertificatePtr certificate = parseCertificate(der);
    const std::shared_ptr<const Key> key =
        certificate ? Key::import(certificate->pCertInfo->SubjectPublicKeyInfo) : nullptr;
    return key ? std::optional<PublicKey>(PublicKey(key)) : std::nullopt;
}

std::optional<PublicKey> PublicKey::ofSubjectPublicKeyInfo(std::string_view der) {
    const auto info =
        decodeAs<CERT_PUBLIC_KEY_INFO>(X509_PUBLIC_KEY_INFO, bytesOf(der), der.size());
    const std::shared_ptr<const Key> key = info ? Key::import(*info) : nullptr;
    return key ? std::optional<PublicKey>(PublicKey(key)) : std::nullopt;
}

std::string PublicKey::type() const {
    return m_key->type;
}

unsigned PublicKey::bits() const {
    return m_key->bits;
}

bool PublicKey::verify(SignatureAlgorithm algorithm, std::string_view hash,
                       std::string_view signature) const {
    const bool isEcdsa = algorithm == SignatureAlgorithm::kEcdsaSha256 ||
                         algorithm == SignatureAlgorithm::kEcdsaSha384;
    if (m_key->type != (isEcdsa ? kEllipticCurve : kRsa)) {
        return false;
    }
    BCRYPT_PKCS1_PADDING_INFO pkcs1 = {bcryptNameOf(hashOf(algorithm))};
    BCRYPT_PSS_PADDING_INFO pss = {pkcs1.pszAlgId, static_cast<ULONG>(hash.size())};
    void* padding = &pkcs1;
    ULONG flags = BCRYPT_PAD_PKCS1;
    std::string bytes(signature);
    if (isEcdsa) {
        const std::optional<std::string> raw = ecdsaFromDer(signature, (m_key->bits + 7) / 8);
        if (!raw) {
            return false;
        }
        bytes = *raw;
        padding = nullptr;
        flags = 0;
    } else if (algorithm == SignatureAlgorithm::kRsaPssSha256) {
        padding = &pss;
        flags = BCRYPT_PAD_PSS;
    }
    std::string hashed(hash);
    return BCRYPT_SUCCESS(BCryptVerifySignature(
        m_key->key.get(), padding, reinterpret_cast<UCHAR*>(hashed.data()),
        static_cast<ULONG>(hashed.size()), reinterpret_cast<UCHAR*>(bytes.data()),
        static_cast<ULONG>(bytes.size()), flags));
}

}  // namespace zr::host
