// Encodings of bytes: raw, hex, base64, PEM.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

enum class ByteFormat { kRaw, kHex, kBase64, kPem };

/// Hex in lower case, on one line.
std::string toHex(std::string_view bytes);

/// Base64 with padding, on one line.
std::string toBase64(std::string_view bytes);

/// Encodes bytes. The text formats end with a line end.
/// @param pemLabel  names the bytes in PEM: "CERTIFICATE".
std::string encode(std::string_view bytes, ByteFormat format, std::string_view pemLabel);

/// Decodes what encode wrote. Blanks and line ends of any kind may stand between the digits.
/// @return nullopt when the text is not wholly of this format.
std::optional<std::string> decode(std::string_view text, ByteFormat format,
                                  std::string_view pemLabel = {});

}  // namespace zr::host
