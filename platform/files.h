// Files that the library opens: its configuration and its log.
#pragma once

#include <cstdio>

namespace zr {

/// Opens a file to read its bytes. A FIFO or a device is refused: reading it could wait for ever.
/// @return a stream, to be closed with fclose; null when there is no such regular file.
std::FILE* openRegularFile(const char* path);

/// Opens a log file to append text, and creates it if it is not there. On Linux a new file can be
/// read and written by its owner alone, and a link or anything else but a regular file is refused:
/// the names of log files can be guessed. On Windows the file has the rights of its folder.
/// @return a stream, to be closed with fclose; null when the file cannot be opened.
std::FILE* openLogFile(const char* path);

}  // namespace zr
