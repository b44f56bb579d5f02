// What the commands for the files of a token share.
#pragma once

#include "host/commands/command_frame.h"
#include "host/token/token_session.h"

namespace zr::host {

/// The largest number that names a file in the library.
inline constexpr unsigned kLastFileName = 65536;

struct FileOptions : TokenOptions {
    PinOptions pin;
    std::string name;
};

/// What to try when a file is not found.
/// @param isLoggedIn  whether private files are visible.
inline std::string fileAdvice(bool isLoggedIn) {
    const std::string naming = "a file created as N is found as N + 1";
    return isLoggedIn ? naming
                      : naming + ", and private files are visible only after a login: give --pin";
}

/// The options of a command for one file.
/// @param last  the largest number that it accepts.
inline void addFileOptions(CLI::App& command, FileOptions& options, unsigned last = kLastFileName) {
    addFileName(command, options.name, last);
    addTokenOptions(command, options);
    addPinOptions(command, options.pin);
}

}  // namespace zr::host
