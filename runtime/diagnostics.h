// Diagnostics on the standard streams, written with one call per text. Text without arguments is not
// formatted: most lines of a call from a script are such text.
//
// The C library of Windows writes formatted text byte by byte; a host that reads the streams
// through a pipe would see torn lines.
#pragma once

namespace zr {

/// Writes text to standard output as it is, also "%".
/// @param text  with the line end.
void consoleOut(const char* text);

/// Writes formatted text to standard output.
/// @param format  printf format, with the line end.
[[gnu::format(printf, 1, 2)]] void consoleOutFormat(const char* format, ...);

/// Writes text to standard error as it is, also "%".
/// @param text  with the line end.
void consoleError(const char* text);

/// Writes formatted text to standard error.
/// @param format  printf format, with the line end.
[[gnu::format(printf, 1, 2)]] void consoleErrorFormat(const char* format, ...);

}  // namespace zr
