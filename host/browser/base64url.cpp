// Bytes in base64url without padding.
#include "host/browser/base64url.h"

#include <array>
#include <cstdint>

namespace zr::host {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> makeValues() {
    std::array<std::uint8_t, 256> values = {};
    values.fill(kNoDigit);
    for (std::size_t i = 0; i < kDigits.size(); ++i) {
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}
constexpr std::array<std::uint8_t, 256> kValues = makeValues();

}  // namespace

std::string toBase64Url(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3);
    std::uint32_t buffer = 0;
    unsigned bits = 0;
    for (const char byte : bytes) {
        buffer = buffer << 8 | static_cast<unsigned char>(byte);
        for (bits += 8; bits >= 6;) {
            bits -= 6;
            text += kDigits[buffer >> bits & 0x3F];
        }
    }
    if (bits > 0) {
        text += kDigits[buffer << (6 - bits) & 0x3F];
    }
    return text;
}

std::optional<std::string> fromBase64Url(std::string_view text) {
    if (text.size() % 4 == 1) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t buffer = 0;
    unsigned bits = 0;
    for (const char digit : text) {
        const std::uint8_t value = kValues[static_cast<unsigned char>(digit)];
        if (value == kNoDigit) {
            return std::nullopt;
        }
        buffer = buffer << 6 | value;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(buffer >> bits & 0xFF);
        }
    }
    // The bits that are left over are zeros.
    const bool isExact = (buffer & ((1U << bits) - 1)) == 0;
    return isExact ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace zr::host
