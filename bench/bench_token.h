// A token as a host opens it, and the same module without the library.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>

#include "pkcs11/cryptoki_types.h"

namespace zr::bench {

/// A provider with a module loaded, and its first token that accepts the PIN 1234, logged in.
class OpenToken {
public:
    /// @param module  a path relative to the current folder.
    explicit OpenToken(const std::string& module);

    /// The certificate of a container.
    zrkey::ComRef<IKeyCertificate> certificate(const zrkey::Variant& container) const;

    zrkey::ComRef<ITokenProvider> provider;
    zrkey::ComRef<IKeyObject> token;
};

/// The module of the real token.
std::string realModule();

/// Makes a copy of the instant module that has so many certificates. Each copy is a module of its
/// own, so that two can be open at once.
/// @return its path, relative to the current folder.
std::string instantModule(long certificates);

/// Starts a module without the library.
void startModule(const std::string& module);

/// A session of a module, without the library, which has started the module and logged in.
class BareModule {
public:
    /// @param module  a path relative to the current folder.
    explicit BareModule(const std::string& module);

    const CK_FUNCTIONS* call = nullptr;
    CK_SESSION_HANDLE session = 0;
};

}  // namespace zr::bench
