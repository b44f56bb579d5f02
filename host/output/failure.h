// A command's failure: what was asked, why it failed, what to try; and the exit code.
#pragma once

#include <zrkey/zrkey.hpp>

#include <optional>
#include <string>
#include <system_error>

namespace zr::host {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;       ///< the operation failed
inline constexpr int kExitUsage = 2;         ///< wrong usage; no token was changed
inline constexpr int kExitModule = 3;        ///< the module or the configuration is not loaded
inline constexpr int kExitNotFound = 4;      ///< no object matches, or several do
inline constexpr int kExitLoginRefused = 5;  ///< the token refused the PIN
inline constexpr int kExitNotVerified = 6;   ///< the signature does not verify
inline constexpr int kExitLoginNeeded = 7;   ///< try again with a PIN
inline constexpr int kExitPinLocked = 8;     ///< the PIN is locked; no try is left

/// Why something failed, and what to try.
struct Cause {
    std::string text;
    std::string advice;
};

/// Thrown by the parts of a command, shown by its frame.
struct Failure {
    int exitCode = kExitFailure;
    std::string asked;                    ///< "open the file 7"
    std::string cause;                    ///< why it failed
    std::string advice;                   ///< what to try
    std::optional<zrkey::Result> result;  ///< the library's result, when the library failed

    /// "zrkey: cannot ASKED: CAUSE; ADVICE" and a line end, without control characters.
    std::string line() const;
};

/// An operation of the library failed.
Failure libraryFailure(int exitCode, std::string asked, zrkey::Result result, std::string advice);

/// An operation of the library failed, and the command found the cause.
Failure explainedFailure(int exitCode, std::string asked, zrkey::Result result, Cause cause);

/// An operation of the operating system failed; its own text is the cause.
Failure systemFailure(int exitCode, std::string asked, std::error_code error, std::string advice);

/// The command itself found the cause.
Failure commandFailure(int exitCode, std::string asked, std::string cause, std::string advice);

}  // namespace zr::host
