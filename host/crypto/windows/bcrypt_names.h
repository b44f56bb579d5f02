// What bcrypt calls the hashes.
#pragma once

#include <windows.h>

#include <bcrypt.h>

#include "host/crypto/hash.h"

namespace zr::host {

inline const wchar_t* bcryptNameOf(HashKind kind) {
    switch (kind) {
        case HashKind::kMd5:
            return BCRYPT_MD5_ALGORITHM;
        case HashKind::kSha1:
            return BCRYPT_SHA1_ALGORITHM;
        case HashKind::kSha256:
            return BCRYPT_SHA256_ALGORITHM;
        case HashKind::kSha384:
            return BCRYPT_SHA384_ALGORITHM;
        case HashKind::kSha512:
            return BCRYPT_SHA512_ALGORITHM;
    }
    return nullptr;
}

}  // namespace zr::host
