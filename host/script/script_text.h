// Conversion between texts of the script engine and texts of the library.
//
// The engine keeps text as CESU-8: UTF-8 in which each half of a surrogate pair is encoded on its
// own. The library's texts are UTF-16.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>
#include <string_view>

namespace zr::host {

/// Converts the engine's text, or UTF-8, to UTF-16. Keeps an unpaired surrogate; a malformed byte
/// becomes U+FFFD.
zrkey::Text fromScriptText(std::string_view text);

/// Converts UTF-16 to the engine's text; keeps an unpaired surrogate.
/// @param text  null reads as empty.
std::string toScriptText(BSTR text);

}  // namespace zr::host
