// The kernel services the library calls: on Windows the system's own.
#pragma once

#include <windows.h>

namespace zr {

/// What separates the components of a path the system hands out.
inline constexpr char kPathSeparator = '\\';

}  // namespace zr
