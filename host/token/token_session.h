// From options to a token: what tokens are there, the one that is meant, the login to it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "module_loading.h"
#include "secret.h"

namespace zr::host {

/// An open token and what it is called.
struct TokenRow {
    LONG index = 0;
    std::string label;
    std::string serial;
    std::string manufacturer;
    std::string model;
    ComRef<IKeyObject> token;
};

struct TokenTable {
    INT slots = 0;
    /// Without the slots that cannot be opened or have neither label nor serial number: no token
    /// has been made in them yet.
    std::vector<TokenRow> rows;
};

TokenTable readTokens(ITokenProvider& provider);

/// The row that is meant. Throws a Failure when there is none, or more than one.
TokenRow chooseToken(TokenTable table, const TokenChoice& choice);

/// The PIN of a command: taken before anything is touched, but for the prompt, which waits until
/// the token is known.
class PinEntry {
public:
    enum class Need {
        kOnRequest,   ///< without a source there is no login
        kIfPossible,  ///< without a source the terminal is asked, if there is one
        kAlways       ///< as before, and it is wrong usage when there is none
    };
    /// Throws a Failure when the source gives no PIN.
    PinEntry(const PinOptions& options, Need need);

    /// The PIN, or null when there is to be no login.
    const Secret* get(const TokenRow& token);
    /// "user" or "security officer".
    std::string role() const;
    INT type() const;

private:
    std::optional<PinSource> m_source;
    bool m_securityOfficer;
    std::optional<Secret> m_pin;
};

/// A module and one of its tokens, released in this order: token, module.
class TokenSession {
public:
    explicit TokenSession(const TokenOptions& options);

    const TokenRow& row() const { return m_row; }
    IKeyObject* operator->() const { return m_row.token.get(); }
    IKeyObject& token() const { return *m_row.token.get(); }
    /// Tries the PIN once. Throws a Failure when the token refuses it.
    /// @return false when there is none.
    bool login(PinEntry& pin) const;

private:
    LoadedModule m_module;
    TokenRow m_row;
};

}  // namespace zr::host
