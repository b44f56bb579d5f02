// The signature of a stateful module: derived from the token, the key and the data, so that a test
// sees which of them were used.
#pragma once

#include <string>
#include <string_view>

namespace zr::test {

/// @param serial  the token's serial number.
/// @param keyId   the CKA_ID of the key.
/// @return 32 bytes.
inline std::string signatureOf(std::string_view serial, std::string_view keyId,
                               std::string_view data) {
    unsigned long long hash = 0xCBF29CE484222325;
    const auto add = [&hash](unsigned char byte) { hash = (hash ^ byte) * 0x100000001B3; };
    for (const std::string_view part : {serial, keyId, data}) {
        for (const char c : part) {
            add(static_cast<unsigned char>(c));
        }
        add('|');
    }
    std::string signature;
    while (signature.size() < 32) {
        add('.');
        signature += static_cast<char>(hash >> 32);
    }
    return signature;
}

}  // namespace zr::test
