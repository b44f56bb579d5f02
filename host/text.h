// Conversion between the three encodings a script's text passes through.
//
// The script engine keeps text as CESU-8: UTF-8 in which each half of a surrogate pair is encoded
// on its own. The library takes and gives UTF-16. Files, arguments and the console are UTF-8.
#pragma once

#include <zrkey/automation.h>

#include <string>
#include <string_view>

namespace zr::host {

using OleString = std::basic_string<OLECHAR>;
using OleStringView = std::basic_string_view<OLECHAR>;

/// Whether text is UTF-8 throughout: nothing malformed, no half of a pair encoded on its own.
bool isUtf8(std::string_view text);

/// UTF-16 of UTF-8 or CESU-8 text; a lone half of a pair stays, a malformed byte becomes U+FFFD.
OleString toUtf16(std::string_view text);

/// The engine's form of UTF-16 text; a lone half of a pair stays.
std::string toScriptText(OleStringView text);

/// UTF-8 of UTF-16 text; a lone half of a pair becomes U+FFFD.
std::string toUtf8(OleStringView text);

}  // namespace zr::host
