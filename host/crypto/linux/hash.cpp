// Hashes by libcrypto.
#include "host/crypto/hash.h"

#include <openssl/evp.h>

#include "host/output/failure.h"

namespace zr::host {
namespace {

const EVP_MD* algorithmOf(HashKind kind) {
    switch (kind) {
        case HashKind::kMd5:
            return EVP_md5();
        case HashKind::kSha1:
            return EVP_sha1();
        case HashKind::kSha256:
            return EVP_sha256();
        case HashKind::kSha384:
            return EVP_sha384();
        case HashKind::kSha512:
            return EVP_sha512();
    }
    return nullptr;
}

}  // namespace

struct Hash::State {
    explicit State(HashKind hashKind) : kind(hashKind) {}
    ~State() { EVP_MD_CTX_free(context); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void require(int result) const {
        if (result != 1) {
            throw commandFailure(kExitFailure, "compute " + nameOf(kind), "libcrypto refuses it",
                                 "check the settings of OpenSSL on this system");
        }
    }

    HashKind kind;
    EVP_MD_CTX* context = EVP_MD_CTX_new();
};

Hash::Hash(HashKind kind) : m_state(std::make_unique<State>(kind)) {
    m_state->require(m_state->context &&
                     EVP_DigestInit_ex(m_state->context, algorithmOf(kind), nullptr));
}

Hash::~Hash() = default;

void Hash::add(std::string_view bytes) {
    m_state->require(EVP_DigestUpdate(m_state->context, bytes.data(), bytes.size()));
}

std::string Hash::finish() {
    unsigned char value[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    m_state->require(EVP_DigestFinal_ex(m_state->context, value, &size));
    return {reinterpret_cast<const char*>(value), size};
}

}  // namespace zr::host
