// What a module says about its readers and tokens when the library only fails.
#pragma once

#include <cstddef>
#include <string>

#include "host/output/failure.h"
#include "host/token/cryptoki.h"

namespace zr::host {

struct TokenRow;

/// What the module says about a token now.
struct TokenState {
    CK_RV result = 0;  ///< a result of isTokenGone when it is gone
    CK_SLOT_ID slot = 0;
    TokenFacts facts;
};

/// Finds the slot of a token that the library opened.
TokenState readTokenState(const Cryptoki& calls, const TokenRow& row);

enum class PinState {
    kUnknown,   ///< the module does not say
    kUsable,    ///< nothing is known against it
    kFewTries,  ///< a wrong PIN was tried since the last login
    kLastTry,   ///< the next wrong PIN locks it
    kLocked,
    kNotSet,
    kTokenRemoved
};

/// How long a PIN may be, in bytes.
struct PinLengths {
    std::size_t shortest = 0;
    std::size_t longest = 0;  ///< 0: not known

    /// The lengths that others allow too; the others' when there is none.
    PinLengths within(const PinLengths& others) const;
    /// For a prompt: " (4 to 8 characters)"; empty when it is not known.
    std::string text() const;
};

/// The state of a PIN, by the flags of its token. Costs no try.
/// @param lengths  may be null; set to what the token says, no longer than a PIN of the command.
PinState readPinState(const Cryptoki& calls, const TokenRow& row, bool securityOfficer,
                      PinLengths* lengths = nullptr);

/// The state of a PIN by the flags of its token.
PinState pinStateOf(CK_FLAGS flags, bool securityOfficer);

/// Why none of the module's tokens can be used.
Cause whyNoToken(const Cryptoki& calls);

}  // namespace zr::host
