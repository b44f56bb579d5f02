// A stateful Cryptoki module, as tests use it: its file, its tokens, and the record of its calls.
//
//     Stateful module('a');                            // "a.dll" in the current directory
//     provider->Load(Text(module.path()));
//     token->VerifyPIN(Text(module.pin(0)), 0);
//     EXPECT_EQ(Lines{}, module.takeMisuses());
//
// Each Stateful is a module of its own. Only the library keeps it loaded, so Unload really unloads
// it; its tokens keep their objects. Safe to use in several threads, except for onCall.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/stateful/stateful_tokens.h"

namespace zr::test {

class Stateful final : public StatefulTokens {
public:
    /// Writes the module's file. Each token holds a file "6", that is opened as 7, and a container
    /// "id" with certificate and keys; the values name the token.
    /// @param letter  names file and tokens.
    explicit Stateful(char letter, CK_ULONG tokens = 2);
    Stateful(const Stateful&) = delete;
    Stateful& operator=(const Stateful&) = delete;
    /// Unloads the module and removes its file.
    ~Stateful();

    /// Relative to the folder that was the current one when the module was made.
    const std::string& path() const { return m_path; }
    /// The token's name, which is its serial number too: "a0".
    std::string name(CK_ULONG token) const { return m_letter + std::to_string(token); }
    std::string label(CK_ULONG token) const { return "Token " + name(token); }
    /// The user's PIN at first, and now.
    std::string pin(CK_ULONG token) const { return "pin-" + name(token); }
    std::string currentPin(CK_ULONG token) const;
    std::string certificate(CK_ULONG token) const { return "certificate of " + name(token); }
    /// What the token's key makes of the data.
    std::string signature(CK_ULONG token, const std::string& data) const;

    /// Makes the tokens as they were at first, and forgets the record.
    void reset();
    /// All that a token holds, a line for each object: "data 6=...".
    std::vector<std::string> contents(CK_ULONG token) const;
    /// Gives the file "6" of every token a value that no token wrote, or its first one again.
    void overwriteFiles();
    void restoreFiles();
    static constexpr char kOverwritten[] = "overwritten";
    std::string file(CK_ULONG token) const { return "file of " + name(token); }
    void removeFile(CK_ULONG token, const std::string& label);
    void setSearchExclusive(bool isExclusive);

    bool isLoaded() const;
    bool isInitialized() const;
    /// Unloads the module.
    /// @return how many references to it were there.
    std::size_t unload();

    /// Every call on another session or slot is a misuse from now on; 0 is none.
    void allowOnly(CK_SESSION_HANDLE session, CK_SLOT_ID slot);
    void allowAll();
    /// The calls of no correct caller since the previous takeMisuses: "C_Login(3): reason".
    std::vector<std::string> takeMisuses();
    /// How many calls were made, of all functions or of one.
    std::size_t callCount(const std::string& function = "") const;
    /// The session that was opened last.
    CK_SESSION_HANDLE lastSession() const;

    /// Called where a call begins and where it ends; may call the library.
    std::function<void(const StatefulCall& call, bool isEnd)> onCall;

    void setLoaded(bool isLoaded) override;
    void setInitialized(bool isInitialized) override;
    void beginCall(const StatefulCall& call) override;
    void endCall(const StatefulCall& call) override;
    void reportMisuse(const StatefulCall& call, const char* reason) override;
    CK_ULONG count() const override { return m_tokenCount; }
    bool isSearchExclusive() const override;
    void describe(CK_ULONG token, CK_TOKEN_INFO* info) const override;
    bool isPin(CK_ULONG token, CK_USER_TYPE user, const CK_UTF8CHAR* pin,
               CK_ULONG length) const override;
    void setPin(CK_ULONG token, CK_USER_TYPE user, const CK_UTF8CHAR* pin,
                CK_ULONG length) override;
    CK_OBJECT_HANDLE create(CK_ULONG token, const CK_ATTRIBUTE* attributes,
                            CK_ULONG count) override;
    bool destroy(CK_ULONG token, CK_OBJECT_HANDLE object) override;
    CK_RV read(CK_ULONG token, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
               CK_ULONG count) const override;
    bool write(CK_ULONG token, CK_OBJECT_HANDLE object, const CK_ATTRIBUTE* attributes,
               CK_ULONG count) override;
    CK_OBJECT_HANDLE findAfter(CK_ULONG token, CK_OBJECT_HANDLE handle,
                               const CK_ATTRIBUTE* attributes, CK_ULONG count) const override;

private:
    using Object = std::map<CK_ATTRIBUTE_TYPE, std::string>;
    struct Token {
        std::string userPin;
        std::string securityOfficerPin;
        std::map<CK_OBJECT_HANDLE, Object> objects;
    };

    Token makeToken(CK_ULONG token) const;
    static void setFile(Token* token, const std::string& value);
    void note(const StatefulCall& call, const char* reason);

    std::string m_letter;
    CK_ULONG m_tokenCount;
    std::string m_path;
    std::string m_file;

    mutable std::mutex m_mutex;
    std::vector<Token> m_tokens;
    bool m_isLoaded = false;
    bool m_isInitialized = false;
    bool m_isSearchExclusive = true;
    bool m_isRestricted = false;
    CK_SESSION_HANDLE m_allowedSession = 0;
    CK_SLOT_ID m_allowedSlot = 0;
    CK_SESSION_HANDLE m_lastSession = 0;
    std::map<std::string, std::size_t> m_calls;
    std::vector<std::string> m_misuses;
};

}  // namespace zr::test
