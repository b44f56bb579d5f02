// The forms in which bytes come out.
#pragma once

#include <string>
#include <string_view>

namespace zr::host {

enum class ByteFormat { kRaw, kHex, kBase64, kPem };

/// Base64 with padding, on one line.
std::string toBase64(std::string_view bytes);

/// Raw bytes as they are; text forms end with a line end.
/// @param pemLabel  what PEM names the bytes: "CERTIFICATE".
std::string encode(std::string_view bytes, ByteFormat format, std::string_view pemLabel);

}  // namespace zr::host
