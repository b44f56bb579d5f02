// Hashes by the system's bcrypt.
#include "host/crypto/hash.h"

#include <windows.h>

#include <bcrypt.h>

#include <algorithm>
#include <limits>

#include "host/crypto/windows/bcrypt_names.h"
#include "host/output/failure.h"

namespace zr::host {

struct Hash::State {
    explicit State(HashKind hashKind) : kind(hashKind) {}
    ~State() {
        if (hash) {
            BCryptDestroyHash(hash);
        }
        if (provider) {
            BCryptCloseAlgorithmProvider(provider, 0);
        }
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void require(NTSTATUS status) const {
        if (!BCRYPT_SUCCESS(status)) {
            throw commandFailure(kExitFailure, "compute " + nameOf(kind), "Windows refuses it",
                                 "check the security policy of this system");
        }
    }

    HashKind kind;
    BCRYPT_ALG_HANDLE provider = nullptr;
    BCRYPT_HASH_HANDLE hash = nullptr;
};

Hash::Hash(HashKind kind) : m_state(std::make_unique<State>(kind)) {
    m_state->require(
        BCryptOpenAlgorithmProvider(&m_state->provider, bcryptNameOf(kind), nullptr, 0));
    m_state->require(
        BCryptCreateHash(m_state->provider, &m_state->hash, nullptr, 0, nullptr, 0, 0));
}

Hash::~Hash() = default;

void Hash::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t size =
            std::min<std::size_t>(bytes.size(), std::numeric_limits<ULONG>::max());
        // It does not change the bytes.
        m_state->require(BCryptHashData(m_state->hash,
                                        reinterpret_cast<UCHAR*>(const_cast<char*>(bytes.data())),
                                        static_cast<ULONG>(size), 0));
        bytes.remove_prefix(size);
    }
}

std::string Hash::finish() {
    ULONG size = 0;
    ULONG copied = 0;
    m_state->require(BCryptGetProperty(m_state->provider, BCRYPT_HASH_LENGTH,
                                       reinterpret_cast<UCHAR*>(&size), sizeof size, &copied, 0));
    std::string value(size, '\0');
    m_state->require(
        BCryptFinishHash(m_state->hash, reinterpret_cast<UCHAR*>(value.data()), size, 0));
    return value;
}

}  // namespace zr::host
