// Text from a token or a user, made safe to show.
#pragma once

#include <string>
#include <string_view>

namespace zr::host {

/// The text with each control character, which could move the cursor, and each byte that is not
/// UTF-8 shown as "?".
std::string printable(std::string_view utf8);

/// The same between quotation marks.
std::string inQuotes(std::string_view utf8);

}  // namespace zr::host
