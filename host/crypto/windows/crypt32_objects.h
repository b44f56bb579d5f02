// Objects of crypt32 and bcrypt that free themselves.
#pragma once

#include <windows.h>

#include <bcrypt.h>
#include <wincrypt.h>

#include <limits>
#include <memory>
#include <string_view>
#include <type_traits>

namespace zr::host {

struct CertificateFreer {
    void operator()(const CERT_CONTEXT* context) const { CertFreeCertificateContext(context); }
};
struct LocalFreer {
    void operator()(void* memory) const { LocalFree(memory); }
};
struct KeyFreer {
    void operator()(void* key) const { BCryptDestroyKey(key); }
};

using CertificatePtr = std::unique_ptr<const CERT_CONTEXT, CertificateFreer>;
using KeyPtr = std::unique_ptr<std::remove_pointer_t<BCRYPT_KEY_HANDLE>, KeyFreer>;

/// What CryptDecodeObjectEx allocates.
template <class T>
using Decoded = std::unique_ptr<T, LocalFreer>;

/// Decodes an ASN.1 structure; null when it is malformed.
template <class T>
Decoded<T> decodeAs(const char* structure, const BYTE* bytes, std::size_t size) {
    T* decoded = nullptr;
    DWORD decodedSize = 0;
    const bool isDecoded =
        size <= std::numeric_limits<DWORD>::max() &&
        CryptDecodeObjectEx(X509_ASN_ENCODING, structure, bytes, static_cast<DWORD>(size),
                            CRYPT_DECODE_ALLOC_FLAG, nullptr, &decoded, &decodedSize);
    return Decoded<T>(isDecoded ? decoded : nullptr);
}

inline const BYTE* bytesOf(std::string_view bytes) {
    return reinterpret_cast<const BYTE*>(bytes.data());
}

/// Null when the bytes are no certificate. Bytes after it are ignored: tokens may pad it.
inline CertificatePtr parseCertificate(std::string_view der) {
    const bool fits = der.size() <= std::numeric_limits<DWORD>::max();
    return CertificatePtr(fits ? CertCreateCertificateContext(X509_ASN_ENCODING, bytesOf(der),
                                                              static_cast<DWORD>(der.size()))
                               : nullptr);
}

}  // namespace zr::host
