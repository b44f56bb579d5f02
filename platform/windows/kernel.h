// The kernel services that the library calls: those of the system.
#pragma once

#include <windows.h>

namespace zr {

/// The separator in the paths that the system returns.
inline constexpr char kPathSeparator = '\\';

}  // namespace zr
