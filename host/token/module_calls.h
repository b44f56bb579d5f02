// Direct calls of a PKCS #11 module: the one place where the command does not go through the
// library. The library returns E_FAIL whatever happened; the module says more.
//
// The library calls the same module in the same process. So nothing here logs in, opens a session
// or changes a token, and a module that the library has initialised is not initialised again.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/system/shared_library.h"

namespace zr::host {

/// A number of PKCS #11 v2.40: 32 bits on Windows, 64 on Linux.
using ModuleNumber = unsigned long;

inline constexpr ModuleNumber kResultOk = 0x0;
inline constexpr ModuleNumber kResultSlotIdInvalid = 0x3;
inline constexpr ModuleNumber kResultTokenRemoved = 0x32;
inline constexpr ModuleNumber kResultNotSupported = 0x54;
inline constexpr ModuleNumber kResultTokenNotPresent = 0xE0;
inline constexpr ModuleNumber kResultTokenNotRecognised = 0xE1;
inline constexpr ModuleNumber kResultAlreadyInitialised = 0x191;

inline constexpr ModuleNumber kFlagUserPinSet = 0x8;
inline constexpr ModuleNumber kFlagTokenInitialised = 0x400;
inline constexpr ModuleNumber kFlagUserPinCountLow = 0x10000;
inline constexpr ModuleNumber kFlagUserPinFinalTry = 0x20000;
inline constexpr ModuleNumber kFlagUserPinLocked = 0x40000;
/// A flag of the user's PIN, shifted by this, is the same flag of the security officer's.
inline constexpr unsigned kFlagOfficerShift = 4;

/// "CKR_GENERAL_ERROR (0x00000005)".
std::string resultText(ModuleNumber result);

/// What a token says about itself, as far as the command asks.
struct TokenFacts {
    std::string label;
    std::string serial;
    ModuleNumber flags = 0;
    ModuleNumber shortestPin = 0;
    ModuleNumber longestPin = 0;
};

class ModuleCalls {
public:
    /// Loads the module and gets its functions, without initialising it.
    /// @param path  absolute, in UTF-8.
    explicit ModuleCalls(const std::string& path);

    const SharedLibrary& library() const { return m_library; }
    /// Why a loaded module has no functions; empty when it has them.
    const std::string& problem() const { return m_problem; }

    ModuleNumber initialise() const;
    void finalise() const;
    /// @param withToken  leaves empty readers out.
    /// @return nullopt when the module cannot list them.
    std::optional<std::vector<ModuleNumber>> slots(bool withToken) const;
    ModuleNumber readToken(ModuleNumber slot, TokenFacts& facts) const;

private:
    template <class... Arguments>
    ModuleNumber call(std::size_t index, Arguments... arguments) const;

    SharedLibrary m_library;
    const unsigned char* m_functions = nullptr;
    std::string m_problem;
};

}  // namespace zr::host
