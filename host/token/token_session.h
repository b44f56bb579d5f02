// From options to a token: the choice of one of a module's, the login.
#pragma once

#include <zrkey/zrkey.hpp>

#include <optional>
#include <string>

#include "host/token/module_loading.h"
#include "host/token/pin.h"
#include "host/token/token_state.h"
#include "host/token/token_table.h"

namespace zr::host {

/// The row of a module that matches. Throws a Failure when none or several match.
TokenRow chooseToken(const LoadedModule& module, const TokenChoice& choice);

/// The PIN of a command. It is read before any token is touched; only the prompt waits until the
/// token is known.
class PinEntry {
public:
    enum class Need {
        kOnRequest,   ///< no source: no login
        kIfPossible,  ///< no source: prompts when there is a terminal, else no login
        kAlways       ///< no source: prompts; without a terminal it is wrong usage
    };
    /// Throws a Failure when the source has no PIN.
    PinEntry(const PinOptions& options, Need need);

    /// Whether there will be a PIN; false means no login.
    bool isGiven() const { return m_source.has_value(); }
    /// The PIN; null means no login.
    /// @param lengths  those that the prompt states.
    const Pin* get(const TokenRow& token, const PinLengths& lengths = {});
    /// Makes sure that the last try is to be used: by the option, or by a question on the terminal,
    /// once. Throws a Failure, with the try unused, when it is not, or nobody can be asked.
    void agreeToLastTry(const TokenRow& token);
    bool isSecurityOfficer() const { return m_securityOfficer; }
    /// "user" or "security officer".
    std::string role() const;
    INT type() const;

private:
    std::optional<PinSource> m_source;
    bool m_securityOfficer;
    bool m_mayUseLastTry;
    std::optional<Pin> m_pin;
};

/// A module and one of its tokens. Destruction releases the token, then the module.
class TokenSession {
public:
    explicit TokenSession(const TokenOptions& options);

    const LoadedModule& module() const { return m_module; }
    const TokenRow& row() const { return m_row; }
    IKeyObject* operator->() const { return m_row.token.get(); }
    IKeyObject& token() const { return *m_row.token.get(); }
    /// The PIN for this token; null means no login. Throws a Failure when the token says that no
    /// login can succeed.
    /// @param lengths  those that the prompt states, as far as the token allows them; without them
    ///                 those of the token.
    const Pin* pinFor(PinEntry& pin, const PinLengths& lengths = {}) const;
    /// What the token says.
    PinLengths pinLengths() const;
    /// Logs in, with one attempt. Throws a Failure when the token refuses the PIN.
    /// @param pin  borrowed; it must outlive this object.
    /// @return false, without a login, when there is no PIN.
    bool login(PinEntry& pin) const;
    /// The PIN of the login; null when there was none.
    PinEntry* acceptedPin() const { return m_acceptedPin; }

private:
    LoadedModule m_module;
    TokenRow m_row;
    mutable PinEntry* m_acceptedPin = nullptr;
};

}  // namespace zr::host
