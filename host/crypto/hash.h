// Hashes of data that is given piece by piece; computed by the system's library.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

enum class HashKind { kMd5, kSha1, kSha256, kSha384, kSha512 };

/// "SHA256".
std::string nameOf(HashKind kind);

/// The hash of that name, in upper or lower case; nullopt for other names.
std::optional<HashKind> hashNamed(std::string_view name);

/// A hash of data that need not fit into memory.
class Hash {
public:
    /// Throws a Failure when the system does not compute this hash: MD5 may be switched off.
    explicit Hash(HashKind kind);
    ~Hash();
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;

    void add(std::string_view bytes);
    /// The hash of all bytes. To be called once, at the end.
    std::string finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// The hash of bytes in memory.
std::string hashOf(HashKind kind, std::string_view bytes);

}  // namespace zr::host
