// The class Token of the object model: what the token says about itself, and its PINs.
#include "host/objects/token_object.h"

#include <utf8cpp/utf8.h>

#include <iterator>

#include "host/token/pkcs11_header.h"

namespace zr::host {
namespace {

/// The type of a PIN.
constexpr INT kSecurityOfficer = 1;

/// A result that the library documents as a number.
Value numberOf(const zrkey::Variant& value) {
    const std::optional<long long> number = value.toNumber();
    return number ? Value(static_cast<double>(*number)) : Value(Nothing());
}

template <HRESULT (STDMETHODCALLTYPE IKeyObject::*kGetter)(BSTR*)>
Value getText(TokenObject& token, const Arguments& arguments) {
    return readText(token, arguments, kGetter);
}

template <HRESULT (STDMETHODCALLTYPE IKeyObject::*kGetter)(VARIANT*)>
Value getNumber(TokenObject& token, const Arguments& arguments) {
    zrkey::Variant value;
    arguments.require((token.use(arguments).get()->*kGetter)(value.receive()));
    return numberOf(value);
}

/// Getters that take the type of a PIN.
template <HRESULT (STDMETHODCALLTYPE IKeyObject::*kGetter)(INT, VARIANT*)>
Value getPinNumber(TokenObject& token, const Arguments& arguments) {
    zrkey::Variant value;
    arguments.require(
        (token.use(arguments).get()->*kGetter)(arguments.integer(0), value.receive()));
    return numberOf(value);
}

Value setLabel(TokenObject& token, const Arguments& arguments) {
    const CallText label(arguments.text(0));
    BSTR text = label.get();
    zrkey::Variant value;
    arguments.require(token.use(arguments)->SetLabel(&text, value.receive()));
    return true;
}

/// A text as a PIN; nullopt when it is too long, or not valid UTF-16.
std::optional<Pin> toPin(const WideText& text) {
    ErasedBytes bytes;
    try {
        utf8::utf16to8(text.units.begin(), text.units.end(), std::back_inserter(bytes));
    } catch (const utf8::exception&) {
        return std::nullopt;
    }
    Pin pin;
    for (const char byte : bytes) {
        if (!pin.append(byte)) {
            return std::nullopt;
        }
    }
    return pin;
}

Value verifyPin(TokenObject& token, const Arguments& arguments) {
    const CallText pin(arguments.text(0));
    const INT type = arguments.integer(1);
    const HRESULT result = token.use(arguments)->VerifyPIN(pin.get(), type);
    // Arguments that the library refuses leave an earlier login as it is.
    if (result != E_INVALIDARG) {
        token.forgetLogin();
    }
    arguments.require(result);
    token.noteLogin(arguments.text(0), type == kSecurityOfficer);
    return true;
}

/// Whether the library has logged in, without a call of the module.
bool isLoggedIn(IKeyObject& library) {
    const zrkey::ByteArray data("x");
    zrkey::ByteArray signature;
    // Without a certificate SignData only checks the login, then fails.
    return library.SignData(nullptr, data, nullptr, signature.receive()) !=
           RPC_E_CANTCALLOUT_INEXTERNALCALL;
}

Value modifyPin(TokenObject& token, const Arguments& arguments) {
    const CallText oldPin(arguments.text(0));
    const CallText newPin(arguments.text(1));
    const INT type = arguments.integer(2);
    const auto library = token.use(arguments);
    const HRESULT result = library->ModifyPIN(oldPin.get(), newPin.get(), type);
    if (result != E_INVALIDARG) {
        token.forgetLogin();
    }
    if (result == E_FAIL && token.repeatsLogin() && isLoggedIn(*library.get())) {
        // The token took the old PIN and refused the new one.
        token.noteLogin(arguments.text(0), type == kSecurityOfficer);
    }
    arguments.require(result);
    token.noteLogin(arguments.text(1), type == kSecurityOfficer);
    return true;
}

Value unlockPin(TokenObject& token, const Arguments& arguments) {
    const CallText officerPin(arguments.text(0));
    const CallText newPin(arguments.has(1) ? arguments.text(1) : WideText());
    arguments.require(token.use(arguments)->UnlockPIN(officerPin.get(), newPin.get()));
    return true;
}

Pin pinIn(const Arguments& arguments, std::size_t index) {
    std::optional<Pin> pin = toPin(arguments.text(index));
    if (!pin) {
        throw arguments.wrong(index, "is not a PIN of at most 127 bytes");
    }
    return std::move(*pin);
}

/// Logs the security officer in to a session, and out on destruction. Not through the library, whose
/// object would stay logged in: then the user could not log in.
class OfficerLogin {
public:
    OfficerLogin(DirectSession& session, const Pin& pin) : m_session(session) {
        const CK_RV result = session->login(CKU_SO, pin);
        m_isOurs = result != CKR_USER_ALREADY_LOGGED_IN;
        if (m_isOurs) {
            session.require(result);
        }
    }
    ~OfficerLogin() {
        if (m_isOurs) {
            m_session->logout();
        }
    }
    OfficerLogin(const OfficerLogin&) = delete;
    OfficerLogin& operator=(const OfficerLogin&) = delete;

private:
    DirectSession& m_session;
    bool m_isOurs;
};

/// A session with the calls that it needs.
struct KeptSession {
    KeptSession(std::shared_ptr<const Cryptoki> kept, const TokenRow& row,
                const Arguments& arguments, CryptokiSession::Access access)
        : calls(std::move(kept)), session(*calls, row, arguments.member(), access) {}

    std::shared_ptr<const Cryptoki> calls;
    DirectSession session;
};

Value unblockPin(TokenObject& token, const Arguments& arguments) {
    const Pin officerPin = pinIn(arguments, 0);
    const Pin newPin = pinIn(arguments, 1);
    const auto session = token.openSession(arguments, CryptokiSession::Access::kReadWrite);
    const OfficerLogin login(*session, officerPin);
    session->require((*session)->initPin(newPin));
    return true;
}

}  // namespace

bool TokenObject::repeatsLogin() const {
    // A module may have called back, and the host may have closed this object.
    return m_calls && m_calls->areApart();
}

void TokenObject::noteLogin(const WideText& pin, bool securityOfficer) {
    std::optional<Pin> kept = repeatsLogin() ? toPin(pin) : std::nullopt;
    if (kept) {
        m_login.emplace(Login{std::move(*kept), securityOfficer});
    }
}

PinState TokenObject::readPin(const TokenRow& row, PinLengths* lengths) const {
    const std::shared_ptr<const Cryptoki> calls = m_calls ? m_calls->get() : nullptr;
    return calls ? readPinState(*calls, row, false, lengths) : PinState::kUnknown;
}

void TokenObject::logIn(const Arguments& arguments, Pin pin) {
    const auto library = use(arguments);
    const HRESULT result = library->VerifyPIN(PinText(pin).get(), 0);
    // As in VerifyPIN.
    if (result != E_INVALIDARG) {
        forgetLogin();
    }
    arguments.require(result);
    if (repeatsLogin()) {
        m_login.emplace(Login{std::move(pin), false});
    }
}

void TokenObject::logOut(const Arguments& arguments) {
    forgetLogin();
    const auto session = openSession(arguments, CryptokiSession::Access::kReadOnly);
    const CK_RV result = (*session)->logout();
    if (result != CKR_USER_NOT_LOGGED_IN) {
        session->require(result);
    }
}

void TokenObject::close() {
    forgetLogin();
    LibraryObject::close();
    // The module ends with the last reference.
    m_calls.reset();
}

std::shared_ptr<DirectSession> TokenObject::openSession(const Arguments& arguments,
                                                        CryptokiSession::Access access) const {
    const auto text = [&](HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
        return toUtf8(std::get<WideText>(readText(*this, arguments, getter)));
    };
    TokenRow row;
    row.index = m_index;
    row.label = text(&IKeyObject::GetLabel);
    row.serial = text(&IKeyObject::GetSerialNumber);
    std::shared_ptr<const Cryptoki> calls = m_calls ? m_calls->get() : nullptr;
    if (!calls) {
        throw arguments.refused(E_FAIL, "the module was unloaded");
    }
    const auto kept = std::make_shared<KeptSession>(std::move(calls), row, arguments, access);
    if (m_login) {
        kept->session.repeatLogin(m_login->pin, m_login->isSecurityOfficer);
    }
    return {kept, &kept->session};
}

std::span<const Member> tokenMembers() {
    using enum ParameterKind;
    static const Parameter pinType = {"pinType", kInteger, true};
    static const Member members[] = {
        libraryCall<getText<&IKeyObject::GetLabel>>(
            "GetLabel", {}, Kind::kText, "Reads the label, without the blanks at its end.")
            .forPages(),
        libraryCall<getText<&IKeyObject::GetSerialNumber>>("GetSerialNumber", {}, Kind::kText,
                                                           "Reads the serial number.")
            .forPages(),
        libraryCall<getText<&IKeyObject::GetManufacturerID>>("GetManufacturerID", {}, Kind::kText,
                                                             "Reads the manufacturer.")
            .forPages(),
        libraryCall<getText<&IKeyObject::GetModelID>>("GetModelID", {}, Kind::kText,
                                                      "Reads the model.")
            .forPages(),
        libraryCall<getNumber<&IKeyObject::GetTotalSize>>(
            "GetTotalSize", {}, Kind::kNumber,
            "Reads the size of the public memory in bytes; 4294967295 when it is not reported.")
            .forPages(),
        libraryCall<getNumber<&IKeyObject::GetFreeSize>>(
            "GetFreeSize", {}, Kind::kNumber,
            "Reads the free public memory in bytes; 4294967295 when it is not reported.")
            .forPages(),
        libraryCall<verifyPin>(
            "VerifyPIN", {{"pin", kText}, pinType}, Kind::kBoolean,
            "Logs in with a PIN of at most 127 bytes in UTF-8; pinType is 0 (or left out) for the "
            "user and 1 for the security officer. Fails with E_FAIL whenever the token refuses; "
            "that also ends an earlier login."),
        libraryCall<modifyPin>(
            "ModifyPIN", {{"oldPin", kText}, {"newPin", kText}, pinType}, Kind::kBoolean,
            "Changes a PIN and logs in with it; pinType is that of VerifyPIN; both "
            "PINs must be 4 to 8 bytes long in UTF-8."),
        extensionCall<unblockPin>("unblockPIN", {{"soPin", kText}, {"newPin", kText}},
                                  Kind::kBoolean,
                                  "Logs in as the security officer, gives the user a new PIN and "
                                  "logs out; fails while the "
                                  "user is logged in."),
        libraryCall<unlockPin>("UnlockPIN", {{"soPin", kText}, {"newPin", kText, true}},
                               Kind::kBoolean, "Does nothing and succeeds; use unblockPIN."),
        libraryCall<getPinNumber<&IKeyObject::GetMaxRetryCount>>(
            "GetMaxRetryCount", {pinType}, Kind::kNumber, "Always fails with E_NOTIMPL."),
        libraryCall<getPinNumber<&IKeyObject::GetRemainRetryCount>>(
            "GetRemainRetryCount", {pinType}, Kind::kNumber, "Always fails with E_NOTIMPL."),
        libraryCall<getPinNumber<&IKeyObject::IsDefaultPIN>>(
            "IsDefaultPIN", {pinType}, Kind::kNumber, "Always fails with E_NOTIMPL."),
        libraryCall<getNumber<&IKeyObject::Lock>>("Lock", {}, Kind::kNumber,
                                                  "Always fails with E_NOTIMPL."),
        libraryCall<getNumber<&IKeyObject::Unlock>>("Unlock", {}, Kind::kNumber,
                                                    "Always fails with E_NOTIMPL."),
        libraryCall<setLabel>("SetLabel", {{"newLabel", kText}}, Kind::kBoolean,
                              "Always fails with E_NOTIMPL."),
        libraryCall<enumContainer>("EnumContainer", {{"reserved", kUnused}}, Kind::kTexts,
                                   "Lists the names of the containers, one for each certificate; a "
                                   "module that fails ends the list early.")
            .forPages(),
        libraryCall<getContainerCount>("GetContainerCount", {}, Kind::kNumber,
                                       "Counts the containers; a module that fails ends the count "
                                       "early.")
            .forPages(),
        libraryCall<openContainer>(
            "OpenContainer", {{"which", kTextOrIndex}}, Kind::kObject,
            "Opens a container by its name, or by its index from 0 in the list of EnumContainer; "
            "the first one when several have the name.")
            .returning(ObjectClass::kContainer)
            .forPages(),
        composedCall<certificates>(
            "certificates", {}, Kind::kObject,
            "Opens the certificates of all containers, in the order of EnumContainer.")
            .returning(ObjectClass::kCollection)
            .forPages(),
        libraryCall<getCertData>("GetCertData", {{"cert", kCertificate}}, Kind::kBytes,
                                 "Reads a certificate, in DER: GetCertData of the certificate.")
            .forPages(),
        libraryCall<getPubKeyData>("GetPubKeyData", {{"cert", kCertificate}}, Kind::kBytes,
                                   "Reads the ID of the first public key whose type, read as text, "
                                   "equals the name of the certificate. The type of an RSA key is "
                                   "the empty text, so a certificate with a name finds no RSA key.")
            .forPages(),
        libraryCall<createContainer>("CreateContainer", {{"containerName", kText}}, Kind::kObject,
                                     "Always fails with E_NOTIMPL.")
            .returning(ObjectClass::kContainer),
        libraryCall<deleteContainer>("DeleteContainer", {{"which", kTextOrIndex}}, Kind::kBoolean,
                                     "Always fails with E_NOTIMPL."),
        libraryCall<signData>(
            "SignData", {{"algorithm", kUnused}, {"data", kBytes}, {"cert", kCertificate}},
            Kind::kBytes,
            "Signs data with the key of a certificate, after a login: RSA with SHA-1 (PKCS #1 "
            "v1.5).")
            .forPages(),
        libraryCall<verifyData>("VerifyData",
                                {{"data", kBytes},
                                 {"cert", kCertificate},
                                 {"algorithm", kUnused},
                                 {"signature", kBytes}},
                                Kind::kBoolean,
                                "Verifies a signature of SignData with the public key on the "
                                "token, after a login; fails "
                                "with E_FAIL when it is not valid.")
            .forPages(),
        extensionCall<signWithAlgorithm>(
            "sign", {{"data", kBytes}, {"cert", kCertificate}, {"algorithm", kText, true}},
            Kind::kBytes,
            "Signs data with the key of a certificate, after a login, by rsa-sha256 when no "
            "algorithm is named; checks the signature with the key in the certificate; ECDSA gives "
            "DER.")
            .forPages(),
        extensionCall<verifyWithAlgorithm>(
            "verify",
            {{"data", kBytes},
             {"cert", kCertificate},
             {"signature", kBytes},
             {"algorithm", kText, true}},
            Kind::kBoolean,
            "Returns whether a signature of sign is valid, by the key in the certificate.")
            .forPages(),
        libraryCall<getText<&IKeyObject::GetDigestMethod>>("GetDigestMethod", {}, Kind::kText,
                                                           "Returns \"MD5\".")
            .forPages(),
        libraryCall<digestData>("DigestData", {{"method", kText}, {"data", kBytes}}, Kind::kBytes,
                                "Computes a digest; the only method is \"MD5\".")
            .forPages(),
        libraryCall<getText<&IKeyObject::GetSignAlgo>>(
            "GetSignAlgo", {}, Kind::kText, "Returns the text of \"algo\" in config.xml.")
            .forPages(),
        libraryCall<getText<&IKeyObject::GetAlgoList>>(
            "GetAlgoList", {}, Kind::kText, "Returns the text of \"algo\" in config.xml.")
            .forPages(),
        libraryCall<createFile>(
            "CreateFile",
            {{"fileName", kText},
             {"reserved1", kUnused},
             {"reserved2", kUnused},
             {"reserved3", kUnused},
             {"reserved4", kUnused}},
            Kind::kObject,
            "Creates an empty file, also beside one of the same name; a name is a "
            "number from 1 to 65536, and the file created as 7 is found as 8.")
            .returning(ObjectClass::kFile),
        libraryCall<fileExists>(
            "FileExists", {{"fileName", kText}}, Kind::kNumber,
            "Returns 1 when the file exists; fails with E_FAIL when it does not."),
        libraryCall<openFile>("OpenFile", {{"fileName", kText}}, Kind::kObject,
                              "Opens a file and reads its content into memory.")
            .returning(ObjectClass::kFile),
        extensionCall<deleteFile>("DeleteFile", {{"fileName", kText}}, Kind::kBoolean,
                                  "Deletes a file; fileName is that of OpenFile."),
        extensionCall<writeFile>("writeFile", {{"fileName", kText}, {"data", kBytes}},
                                 Kind::kBoolean,
                                 "Replaces the content of a file by at most 1048576 bytes; "
                                 "fileName is that of OpenFile; "
                                 "creates the file when it does not exist."),
        libraryCall<enumFiles>("EnumFiles", {}, Kind::kNothing, "Always fails with E_NOTIMPL."),
        composedCall<closeObject>(
            "Close", {}, Kind::kBoolean,
            "Releases the token: it logs out and closes its session when nothing opened from it is "
            "left.")
            .forClosed()
            .forPages()};
    return members;
}

}  // namespace zr::host
