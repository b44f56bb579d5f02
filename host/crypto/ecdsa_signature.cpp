// The two forms of an ECDSA signature: r and s side by side, as PKCS #11 has them, and DER.
//
// Own code for both targets: Windows has a function for it that Wine lacks.
#include "host/crypto/public_key.h"

namespace zr::host {
namespace {

constexpr char kSequence = 0x30;
constexpr char kInteger = 0x02;
/// A length from here on has a byte of its own before it.
constexpr std::size_t kLongLength = 0x80;
/// The longest signatures, of curves with 521 bits, are shorter.
constexpr std::size_t kMostBytes = 0xFF;

bool isNegative(std::string_view number) {
    return (static_cast<unsigned char>(number.front()) & 0x80) != 0;
}

std::string withHeader(char tag, std::string_view content) {
    std::string element(1, tag);
    if (content.size() >= kLongLength) {
        element += '\x81';
    }
    element += static_cast<char>(content.size());
    return element.append(content);
}

std::string encodeNumber(std::string_view number) {
    while (number.size() > 1 && number.front() == '\0') {
        number.remove_prefix(1);
    }
    std::string content(isNegative(number) ? 1 : 0, '\0');
    return withHeader(kInteger, content.append(number));
}

/// Takes an element off the front.
/// @return its content; nullopt when it has another tag, is cut off, or is not as short as can be.
std::optional<std::string_view> takeElement(char tag, std::string_view& bytes) {
    if (bytes.size() < 2 || bytes[0] != tag) {
        return std::nullopt;
    }
    std::size_t size = static_cast<unsigned char>(bytes[1]);
    std::size_t header = 2;
    if (size >= kLongLength) {
        if (bytes[1] != '\x81' || bytes.size() < 3) {
            return std::nullopt;
        }
        size = static_cast<unsigned char>(bytes[2]);
        header = 3;
        if (size < kLongLength) {
            return std::nullopt;
        }
    }
    if (bytes.size() - header < size) {
        return std::nullopt;
    }
    const std::string_view content = bytes.substr(header, size);
    bytes.remove_prefix(header + size);
    return content;
}

/// Takes a number that is not negative.
/// @return its bytes without leading zeros.
std::optional<std::string_view> takeNumber(std::string_view& bytes) {
    std::optional<std::string_view> number = takeElement(kInteger, bytes);
    if (!number || number->empty() || isNegative(*number)) {
        return std::nullopt;
    }
    if (number->front() == '\0') {
        number->remove_prefix(1);
        if (!number->empty() && !isNegative(*number)) {
            return std::nullopt;
        }
    }
    return number;
}

}  // namespace

std::optional<std::string> ecdsaToDer(std::string_view rawRAndS) {
    const std::size_t size = rawRAndS.size() / 2;
    if (size == 0 || rawRAndS.size() % 2 != 0) {
        return std::nullopt;
    }
    const std::string numbers =
        encodeNumber(rawRAndS.substr(0, size)) + encodeNumber(rawRAndS.substr(size));
    if (numbers.size() > kMostBytes) {
        return std::nullopt;
    }
    return withHeader(kSequence, numbers);
}

std::optional<std::string> ecdsaFromDer(std::string_view der, std::size_t coordinateSize) {
    std::optional<std::string_view> numbers = takeElement(kSequence, der);
    if (!numbers || !der.empty()) {
        return std::nullopt;
    }
    std::string raw;
    for (int i = 0; i < 2; ++i) {
        const std::optional<std::string_view> number = takeNumber(*numbers);
        if (!number || number->size() > coordinateSize) {
            return std::nullopt;
        }
        raw.append(coordinateSize - number->size(), '\0').append(*number);
    }
    return numbers->empty() ? std::optional<std::string>(raw) : std::nullopt;
}

}  // namespace zr::host
