// Bytes in base64url without padding (RFC 4648, section 5).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

std::string toBase64Url(std::string_view bytes);
/// @return nullopt for every text that toBase64Url does not write.
std::optional<std::string> fromBase64Url(std::string_view text);

}  // namespace zr::host
