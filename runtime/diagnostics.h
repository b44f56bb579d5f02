// Diagnostics on the standard streams, written with one call per text.
//
// The C library of Windows writes formatted text byte by byte; a host that reads the streams
// through a pipe would see torn lines.
#pragma once

namespace zr {

/// Writes formatted text to standard output.
/// @param format  printf format, with the line end.
[[gnu::format(printf, 1, 2)]] void consoleOut(const char* format, ...);

/// Writes formatted text to standard error.
/// @param format  printf format, with the line end.
[[gnu::format(printf, 1, 2)]] void consoleError(const char* format, ...);

}  // namespace zr
