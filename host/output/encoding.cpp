// Encodings of bytes: raw, hex, base64, PEM.
#include "host/output/encoding.h"

namespace zr::host {
namespace {

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kPemLine = 64;

constexpr std::string_view kBlanks = " \t\r\n";

std::string withoutBlanks(std::string_view text) {
    std::string digits;
    for (const char letter : text) {
        if (kBlanks.find(letter) == std::string_view::npos) {
            digits += letter;
        }
    }
    return digits;
}

std::optional<std::string> fromHex(std::string_view text) {
    const std::string digits = withoutBlanks(text);
    if (digits.size() % 2 != 0 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return std::nullopt;
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

std::optional<std::string> fromBase64(std::string_view text) {
    const std::string padded = withoutBlanks(text);
    std::string_view digits = padded;
    if (digits.size() % 4 != 0) {
        return std::nullopt;
    }
    const std::size_t padding = digits.ends_with("==") ? 2 : digits.ends_with('=') ? 1 : 0;
    digits.remove_suffix(padding);
    std::string bytes;
    unsigned bits = 0;
    unsigned count = 0;
    for (const char digit : digits) {
        const std::size_t value = kBase64Digits.find(digit);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << 6 | static_cast<unsigned>(value)) & 0xFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    // The bits that make no whole byte are zero.
    return (bits & ((1U << count) - 1)) == 0 ? std::optional<std::string>(bytes) : std::nullopt;
}

std::optional<std::string> fromPem(std::string_view text, std::string_view label) {
    const std::string first = std::string("-----BEGIN ").append(label).append("-----");
    const std::string last = std::string("-----END ").append(label).append("-----");
    const std::size_t begin = text.find_first_not_of(kBlanks);
    const std::size_t end = text.find_last_not_of(kBlanks) + 1;
    if (begin == std::string_view::npos || end - begin < first.size() + last.size()) {
        return std::nullopt;
    }
    text = text.substr(begin, end - begin);
    if (!text.starts_with(first) || !text.ends_with(last)) {
        return std::nullopt;
    }
    text.remove_prefix(first.size());
    text.remove_suffix(last.size());
    return fromBase64(text);
}

std::string toPem(std::string_view bytes, std::string_view label) {
    const std::string base64 = toBase64(bytes);
    std::string pem = "-----BEGIN " + std::string(label) + "-----\n";
    for (std::size_t i = 0; i < base64.size(); i += kPemLine) {
        pem += base64.substr(i, kPemLine) + '\n';
    }
    return pem + "-----END " + std::string(label) + "-----\n";
}

}  // namespace

std::string toHex(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const char byte : bytes) {
        hex += kDigits[static_cast<unsigned char>(byte) >> 4];
        hex += kDigits[static_cast<unsigned char>(byte) & 0x0F];
    }
    return hex;
}

std::string toBase64(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view group = bytes.substr(i, 3);
        unsigned bits = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            bits = bits << 8 | (j < group.size() ? static_cast<unsigned char>(group[j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            text += j <= group.size() ? kBase64Digits[bits >> (18 - 6 * j) & 0x3F] : '=';
        }
    }
    return text;
}

std::string encode(std::string_view bytes, ByteFormat format, std::string_view pemLabel) {
    switch (format) {
        case ByteFormat::kHex:
            return toHex(bytes) + '\n';
        case ByteFormat::kBase64:
            return toBase64(bytes) + '\n';
        case ByteFormat::kPem:
            return toPem(bytes, pemLabel);
        case ByteFormat::kRaw:
            break;
    }
    return std::string(bytes);
}

std::optional<std::string> decode(std::string_view text, ByteFormat format,
                                  std::string_view pemLabel) {
    switch (format) {
        case ByteFormat::kHex:
            return fromHex(text);
        case ByteFormat::kBase64:
            return fromBase64(text);
        case ByteFormat::kPem:
            return fromPem(text, pemLabel);
        case ByteFormat::kRaw:
            break;
    }
    return std::string(text);
}

}  // namespace zr::host
