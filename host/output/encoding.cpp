// Encodings of bytes: raw, hex, base64, PEM.
#include "host/output/encoding.h"

namespace zr::host {
namespace {

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kPemLine = 64;

std::string toHex(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const char byte : bytes) {
        hex += kDigits[static_cast<unsigned char>(byte) >> 4];
        hex += kDigits[static_cast<unsigned char>(byte) & 0x0F];
    }
    return hex;
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

}  // namespace zr::host
