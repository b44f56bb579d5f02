// Objects of libcrypto that free themselves.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <limits>
#include <memory>
#include <string_view>

namespace zr::host {

template <auto Release>
struct Freer {
    template <class T>
    void operator()(T* object) const {
        Release(object);
    }
};

using CertificatePtr = std::unique_ptr<X509, Freer<X509_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>>;
using KeyContextPtr = std::unique_ptr<EVP_PKEY_CTX, Freer<EVP_PKEY_CTX_free>>;

/// Null when the bytes are no certificate. Bytes after it are ignored: tokens may pad it.
inline CertificatePtr parseCertificate(std::string_view der) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
    const bool fits = der.size() <= static_cast<std::size_t>(std::numeric_limits<long>::max());
    return CertificatePtr(fits ? d2i_X509(nullptr, &bytes, static_cast<long>(der.size()))
                               : nullptr);
}

}  // namespace zr::host
