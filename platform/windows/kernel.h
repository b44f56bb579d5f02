// The kernel services the library calls: on Windows the system's own.
#pragma once

#include <windows.h>

namespace zr {

/// What separates the components of a path the system hands out.
inline constexpr char kPathSeparator = '\\';

/// Whether a path with "/" as separator leads from a root: of a drive, or of a share or device.
inline bool isAbsolutePath(const char* path) {
    const char letter = static_cast<char>(path[0] | 0x20);
    return path[0] == '/' || (letter >= 'a' && letter <= 'z' && path[1] == ':' && path[2] == '/');
}

}  // namespace zr
