// Conversion between texts of the script engine and texts of the library.
//
// The engine keeps text as CESU-8: UTF-8 in which each half of a surrogate pair is encoded on its
// own. The library's texts are UTF-16. A text may be a PIN: what is made on the way is erased.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string_view>

#include "host/system/erasing_allocator.h"

namespace zr::host {

/// Converts the engine's text, or UTF-8, to UTF-16. Keeps an unpaired surrogate; a malformed byte
/// becomes U+FFFD.
ErasedVector<OLECHAR> toUnits(std::string_view text);

/// The same as a text for the library. The caller erases it.
zrkey::Text fromScriptText(std::string_view text);

/// Converts UTF-16 to the engine's text; keeps an unpaired surrogate.
ErasedBytes toScriptText(const OLECHAR* units, std::size_t size);

/// Converts the engine's text to UTF-8; an unpaired surrogate becomes U+FFFD.
ErasedBytes toUtf8(std::string_view text);

}  // namespace zr::host
