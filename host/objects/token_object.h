// The class Token of the object model.
#pragma once

#include <memory>
#include <optional>

#include "host/objects/library_object.h"
#include "host/objects/module_calls.h"
#include "host/token/direct_session.h"
#include "host/token/pin.h"
#include "host/token/token_state.h"

namespace zr::host {

class TokenObject : public LibraryObject<IKeyObject, ObjectClass::kToken> {
public:
    /// @param index  with which OpenKey opened it.
    /// @param calls  of the module that it was opened with; null: none is loaded.
    TokenObject(zrkey::ComRef<IKeyObject> token, LONG index, std::shared_ptr<ModuleCalls> calls)
        : LibraryObject(std::move(token)), m_index(index), m_calls(std::move(calls)) {}

    ~TokenObject() override { close(); }

    /// A session beside the library's, which shares its login and keeps the calls. Throws a CallError
    /// when the module was unloaded, a Failure when the token was removed.
    std::shared_ptr<DirectSession> openSession(const Arguments& arguments,
                                               CryptokiSession::Access access) const;

    /// Whether the extensions have to log in again with the PIN of the library's login.
    bool repeatsLogin() const;
    /// Forgets the PIN: the library's login is over.
    void forgetLogin() { m_login.reset(); }
    /// Keeps the PIN of a login of the library, if the extensions have to log in with it again.
    void noteLogin(const WideText& pin, bool securityOfficer);

    /// The state of the user's PIN, by the module that the token was opened with; kUnknown when it was
    /// unloaded.
    /// @param row      index, label and serial number of this token.
    /// @param lengths  may be null; see readPinState.
    PinState readPin(const TokenRow& row, PinLengths* lengths = nullptr) const;
    /// Logs the user in through the library. Throws a CallError when the token refuses; that also ends
    /// an earlier login.
    void logIn(const Arguments& arguments, Pin pin);
    /// Logs out whoever is logged in. Where the extensions have to repeat the library's login, that of
    /// the library may last until the token is closed. Throws a CallError or a Failure.
    void logOut(const Arguments& arguments);
    LONG index() const { return m_index; }
    void close() final;

private:
    struct Login {
        Pin pin;
        bool isSecurityOfficer;
    };

    LONG m_index;
    std::shared_ptr<ModuleCalls> m_calls;
    std::optional<Login> m_login;  ///< where the extensions have to repeat it
};

std::span<const Member> tokenMembers();

// Members, by what they are about.
Value createFile(TokenObject& token, const Arguments& arguments);
Value fileExists(TokenObject& token, const Arguments& arguments);
Value openFile(TokenObject& token, const Arguments& arguments);
Value deleteFile(TokenObject& token, const Arguments& arguments);
Value enumFiles(TokenObject& token, const Arguments& arguments);
Value writeFile(TokenObject& token, const Arguments& arguments);

Value getContainerCount(TokenObject& token, const Arguments& arguments);
Value openContainer(TokenObject& token, const Arguments& arguments);
Value enumContainer(TokenObject& token, const Arguments& arguments);
Value createContainer(TokenObject& token, const Arguments& arguments);
Value deleteContainer(TokenObject& token, const Arguments& arguments);
Value certificates(TokenObject& token, const Arguments& arguments);
Value getCertData(TokenObject& token, const Arguments& arguments);
Value getPubKeyData(TokenObject& token, const Arguments& arguments);

Value digestData(TokenObject& token, const Arguments& arguments);
Value signData(TokenObject& token, const Arguments& arguments);
Value verifyData(TokenObject& token, const Arguments& arguments);
Value signWithAlgorithm(TokenObject& token, const Arguments& arguments);
Value verifyWithAlgorithm(TokenObject& token, const Arguments& arguments);

}  // namespace zr::host
