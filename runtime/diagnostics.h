// The runtime's own diagnostics on the standard streams, each line written with one call.
//
// The C library of Windows writes formatted text byte by byte; hosts that read the streams through
// a pipe would see torn lines.
#pragma once

namespace zr {

/// Writes formatted text to standard output.
/// @param format  printf format; the text carries its own line end.
[[gnu::format(printf, 1, 2)]] void consoleOut(const char* format, ...);

/// Writes formatted text to standard error.
/// @param format  printf format; the text carries its own line end.
[[gnu::format(printf, 1, 2)]] void consoleError(const char* format, ...);

}  // namespace zr
