// What a module says about its readers and tokens when the library only fails.
#pragma once

#include "host/output/failure.h"

namespace zr::host {

class LoadedModule;
struct TokenRow;

enum class PinState {
    kUnknown,   ///< the module does not say
    kUsable,    ///< nothing is known against it
    kFewTries,  ///< a wrong PIN was tried since the last login
    kLastTry,   ///< the next wrong PIN locks it
    kLocked,
    kNotSet,
    kTokenRemoved
};

/// The state of a PIN, by the flags of its token. Costs no try.
PinState readPinState(const LoadedModule& module, const TokenRow& row, bool securityOfficer);

/// Why none of the module's tokens can be used.
Cause whyNoToken(const LoadedModule& module);

}  // namespace zr::host
