// MD5 by libcrypto.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "bench/linux/libcrypto_digest.h"

#include <openssl/evp.h>
#include <openssl/md5.h>

namespace zr::bench {

void evpMd5(const void* data, std::size_t length, unsigned char* digest) {
    static EVP_MD* const method = EVP_MD_fetch(nullptr, "MD5", nullptr);
    static EVP_MD_CTX* const context = EVP_MD_CTX_new();
    EVP_DigestInit_ex(context, method, nullptr);
    EVP_DigestUpdate(context, data, length);
    EVP_DigestFinal_ex(context, digest, nullptr);
}

void plainMd5(const void* data, std::size_t length, unsigned char* digest) {
    MD5(static_cast<const unsigned char*>(data), length, digest);
}

}  // namespace zr::bench
