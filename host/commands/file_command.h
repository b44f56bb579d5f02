// What the commands on a token's files share.
#pragma once

#include "command_frame.h"
#include "token_session.h"

namespace zr::host {

/// The greatest name the library looks a file up by.
inline constexpr unsigned kLastFileName = 65536;

struct FileOptions : TokenOptions {
    PinOptions pin;
    std::string name;
};

/// What to try when a file is not found.
/// @param isLoggedIn  whether private files are seen.
inline std::string fileAdvice(bool isLoggedIn) {
    const std::string naming = "a file created as N is found as N + 1";
    return isLoggedIn ? naming : naming + ", and private files are seen after a login: give --pin";
}

/// The options of a command on one file.
/// @param last  the greatest name that it takes.
inline void addFileOptions(CLI::App& command, FileOptions& options, unsigned last = kLastFileName) {
    addFileName(command, options.name, last);
    addTokenOptions(command, options);
    addPinOptions(command, options.pin);
}

}  // namespace zr::host
