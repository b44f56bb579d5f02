// Encodings of bytes: raw, hex, base64, PEM.
#pragma once

#include <string>
#include <string_view>

namespace zr::host {

enum class ByteFormat { kRaw, kHex, kBase64, kPem };

/// Base64 with padding, on one line.
std::string toBase64(std::string_view bytes);

/// Encodes bytes. The text formats end with a line end.
/// @param pemLabel  names the bytes in PEM: "CERTIFICATE".
std::string encode(std::string_view bytes, ByteFormat format, std::string_view pemLabel);

}  // namespace zr::host
