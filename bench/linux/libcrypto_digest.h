// MD5 by libcrypto. In a file of its own: libcrypto's names and those of runtime/md5.h are the same.
#pragma once

#include <cstddef>

namespace zr::bench {

/// By the EVP functions, with a context that is kept and a method that was fetched before.
void evpMd5(const void* data, std::size_t length, unsigned char* digest);

/// By the function MD5: the shortest way through libcrypto, without its providers.
void plainMd5(const void* data, std::size_t length, unsigned char* digest);

}  // namespace zr::bench
