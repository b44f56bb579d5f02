// Hashes of data: their names.
#include "host/crypto/hash.h"

#include <algorithm>
#include <utility>

namespace zr::host {
namespace {

constexpr std::pair<HashKind, std::string_view> kNames[] = {{HashKind::kMd5, "MD5"},
                                                            {HashKind::kSha1, "SHA1"},
                                                            {HashKind::kSha256, "SHA256"},
                                                            {HashKind::kSha384, "SHA384"},
                                                            {HashKind::kSha512, "SHA512"}};

bool isSameLetter(char one, char other) {
    const auto upper = [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    };
    return upper(one) == upper(other);
}

}  // namespace

std::string nameOf(HashKind kind) {
    for (const auto& [known, name] : kNames) {
        if (known == kind) {
            return std::string(name);
        }
    }
    return {};
}

std::optional<HashKind> hashNamed(std::string_view name) {
    for (const auto& [kind, known] : kNames) {
        if (std::ranges::equal(name, known, isSameLetter)) {
            return kind;
        }
    }
    return std::nullopt;
}

std::string hashOf(HashKind kind, std::string_view bytes) {
    Hash hash(kind);
    hash.add(bytes);
    return hash.finish();
}

}  // namespace zr::host
