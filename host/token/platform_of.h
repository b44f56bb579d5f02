// The platform that a shared library was built for, from the first bytes of its file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zr::host {

/// How many bytes platformOf needs to see.
inline constexpr std::size_t kHeaderSize = 4096;

/// "Linux x86-64"; empty when the bytes begin no shared library that is known.
std::string platformOf(std::string_view header);

}  // namespace zr::host
