// StoredPin: the PIN of a token's last login.
//
// All of them are in one list, so that unloading a module on any thread can wipe the PINs of its
// tokens: a host may keep a token longer than its module, and DeleteFile always does.
#pragma once

#include <cstddef>

#include "pkcs11/session.h"

class StoredPin {
public:
    /// With the terminator, in bytes of UTF-8.
    static constexpr std::size_t kSize = 128;

    /// @param session  the token's; it outlives this.
    explicit StoredPin(const Session& session);
    StoredPin(const StoredPin&) = delete;
    StoredPin& operator=(const StoredPin&) = delete;
    /// Wipes the PIN.
    ~StoredPin();

    /// Keeps a PIN; not when the session has ended.
    /// @param pin  kSize bytes.
    void store(const char* pin);
    void wipe();

    /// Wipes the PIN of every token whose session has ended.
    static void wipeEnded();

private:
    const Session& m_session;
    char m_szPIN[kSize];
    StoredPin* m_next;
};
