// A command's failure: what was asked, what was answered, what to try; and the exit code.
#pragma once

#include <zrkey/zrkey.h>

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;       ///< the operation failed
inline constexpr int kExitUsage = 2;         ///< wrong usage; no token was touched
inline constexpr int kExitModule = 3;        ///< the module or the configuration is not loaded
inline constexpr int kExitNotFound = 4;      ///< nothing of that name, or several
inline constexpr int kExitLoginRefused = 5;  ///< the token refused the PIN
inline constexpr int kExitNotVerified = 6;   ///< the signature does not verify
inline constexpr int kExitLoginNeeded = 7;   ///< to be asked again with a PIN

/// Thrown by the parts of a command, shown by its frame.
struct Failure {
    int exitCode = kExitFailure;
    std::string asked;              ///< "open file 7"
    std::optional<HRESULT> answer;  ///< the library's, when it was asked
    std::string reason;             ///< the command's own, when the library was not asked
    std::string advice;             ///< what to try

    /// Why: the library's answer or the command's own reason.
    std::string cause() const;
    /// "zrkey: cannot ASKED: CAUSE; ADVICE" and a line end; nothing in it moves the cursor.
    std::string line() const;
};

/// A failure that the library answered.
Failure refused(int exitCode, std::string asked, HRESULT answer, std::string advice);

/// A failure that the command found without asking the library.
Failure failed(int exitCode, std::string asked, std::string reason, std::string advice);

/// Text that comes from a token or a user, without the characters that move a cursor.
std::string printable(std::string_view utf8);

/// The same between quotation marks.
std::string inQuotes(std::string_view utf8);

}  // namespace zr::host
