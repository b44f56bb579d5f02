// KeyObject_pkcs11: a token in a slot, reached through one Cryptoki session.
#pragma once

#include "model/key_object.h"
#include "pkcs11/cryptoki_types.h"
#include "pkcs11/provider_pkcs11.h"
#include "pkcs11/session.h"
#include "pkcs11/stored_pin.h"

class LogScope;
class TokenAttributes;

class KeyObject_pkcs11 : public KeyObject {
public:
    /// @param provider  the parent; the object holds a reference to it. May be null.
    /// @param session   a session on the module of the token; with the default every call fails.
    explicit KeyObject_pkcs11(TokenProvider* provider, Session session = Session());
    ~KeyObject_pkcs11() override;

    // Information: token_pkcs11_info.cpp.
    HRESULT STDMETHODCALLTYPE GetSerialNumber(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE SetLabel(BSTR* label, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetManufacturerID(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetModelID(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetTotalSize(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetFreeSize(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetKeyObjectClassName(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetCaLibPath(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetCSPName(BSTR* out) override;

    // PINs and login: token_pkcs11_pin.cpp.
    HRESULT STDMETHODCALLTYPE ModifyPIN(BSTR oldPin, BSTR newPin, INT type) override;
    HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) override;
    HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) override;
    HRESULT STDMETHODCALLTYPE Lock(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE Unlock(VARIANT* result) override;

    // Data files: token_pkcs11_files.cpp.
    HRESULT STDMETHODCALLTYPE CreateFile(BSTR name, INT reserved1, INT reserved2, INT reserved3,
                                         ULONG reserved4, void** file) override;
    HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) override;
    HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE DeleteFile(BSTR name) override;

    // Containers and certificates: token_pkcs11_containers.cpp.
    HRESULT STDMETHODCALLTYPE CreateContainer(BSTR name, void** container) override;
    HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT which, void** container) override;
    HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT which) override;
    using KeyObject::EnumContainer;
    HRESULT STDMETHODCALLTYPE EnumContainer(INT reserved, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate* certificate, VARIANT* result) override;

    // Signing, verification and digests: token_pkcs11_sign.cpp.
    HRESULT STDMETHODCALLTYPE GetPubKeyData(IKeyCertificate* certificate, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE SignData(BSTR algorithm, VARIANT data, IKeyCertificate* certificate,
                                       VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE VerifyData(VARIANT data, IKeyCertificate* certificate, BSTR algorithm,
                                         VARIANT signature) override;
    HRESULT STDMETHODCALLTYPE VerifyDataByCert(VARIANT data, IKeyCertificate* certificate,
                                               VARIANT certificateData, BSTR algorithm,
                                               VARIANT signature) override;
    HRESULT STDMETHODCALLTYPE VerifyDataByPubKey(VARIANT data, IKeyCertificate* certificate,
                                                 VARIANT publicKey, BSTR algorithm,
                                                 VARIANT signature) override;
    HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR* out) override;
    using KeyObject::DigestData;
    HRESULT STDMETHODCALLTYPE DigestData(BSTR method, VARIANT data, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetSignAlgo(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE GetAlgoList(BSTR* out) override;

    /// Logs out and closes the session; a second call does nothing. Always S_OK.
    HRESULT STDMETHODCALLTYPE CloseKey() override;
    void FinalRelease() override;

    // The provider passes these to a token that it opened. Always S_OK.
    virtual HRESULT SetSlotID(CK_SLOT_ID slot);
    /// @param application  taken over; freed with free.
    virtual HRESULT SetApplication(void* application);
    virtual HRESULT SethSession(CK_SESSION_HANDLE session);
    /// @param text  copied; null and texts of 500 bytes or more are refused: the list stays.
    /// @return always 1.
    virtual BOOL SetAlgoList(const char* text);
    virtual BOOL SetDigestList(const char* text);

    /// The first key of a type whose ID, read as a string, equals id.
    /// @param publicFlag  non-zero finds a public key, 0 a private one.
    /// @retval E_FAIL  none, or a Cryptoki failure; handle is untouched.
    virtual HRESULT GetPubPriKeyHandle(CK_OBJECT_HANDLE* handle, int publicFlag, ULONG keyType,
                                       const char* id);

    /// The owning provider; null when there is none or it is of another kind.
    TokenProvider_pkcs11* GetTokenProvider() const;

    /// For the Cryptoki calls of this token, its files, containers and certificates.
    const Session& GetSession() const { return m_session; }

private:
    template <std::size_t Width>
    HRESULT ReadTextField(CK_UTF8CHAR (CK_TOKEN_INFO::*field)[Width], BSTR* out) const;
    HRESULT ReadMemorySize(CK_ULONG CK_TOKEN_INFO::*size, VARIANT* result) const;
    bool FindPubKeyData(const char* id, TokenAttributes* read, const LogScope& scope) const;

    int m_bLogin = 0;
    int m_nLoginType = 0;
    char m_szAlgoList[500] = {};
    char m_szDigestList[500] = {};
    void* m_pApplication = nullptr;
    Session m_session;
    StoredPin m_pin{m_session};
};
