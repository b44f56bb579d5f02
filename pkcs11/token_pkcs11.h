// KeyObject_pkcs11: a token in a slot, reached through one Cryptoki session.
#pragma once

#include "model/key_object.h"
#include "pkcs11/cryptoki.h"
#include "pkcs11/token_provider.h"

class LogScope;
class TokenAttributes;

class KeyObject_pkcs11 : public KeyObject {
public:
    explicit KeyObject_pkcs11(TokenProvider* provider);
    ~KeyObject_pkcs11() override;

    // Information: key_object_info.cpp.
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

    // PINs and login: key_object_pin.cpp.
    HRESULT STDMETHODCALLTYPE ModifyPIN(BSTR oldPin, BSTR newPin, INT type) override;
    HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT type, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) override;
    HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) override;
    HRESULT STDMETHODCALLTYPE Lock(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE Unlock(VARIANT* result) override;

    // Data files: key_object_files.cpp.
    HRESULT STDMETHODCALLTYPE CreateFile(BSTR name, INT reserved1, INT reserved2, INT reserved3,
                                         ULONG reserved4, void** file) override;
    HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) override;
    HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE DeleteFile(BSTR name) override;

    // Containers and certificates: key_object_containers.cpp.
    HRESULT STDMETHODCALLTYPE CreateContainer(BSTR name, void** container) override;
    HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT which, void** container) override;
    HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT which) override;
    using KeyObject::EnumContainer;
    HRESULT STDMETHODCALLTYPE EnumContainer(INT reserved, VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate* certificate, VARIANT* result) override;

    // Signing, verification and digests: key_object_sign.cpp.
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

    /// Logs out and closes the session; a second call does nothing. S_OK always.
    HRESULT STDMETHODCALLTYPE CloseKey() override;
    void FinalRelease() override;

    // What the provider hands over to a token that it opened. S_OK always.
    virtual HRESULT SetSlotID(CK_SLOT_ID slot);
    /// @param application  taken over; released with free.
    virtual HRESULT SetApplication(void* application);
    virtual HRESULT SethSession(CK_SESSION_HANDLE session);
    /// @param text  copied; of 500 bytes or more, and null: refused, the list stays as it was.
    /// @return 1 always.
    virtual BOOL SetAlgoList(const char* text);
    virtual BOOL SetDigestList(const char* text);

    /// The first key of a type whose ID, read as a string, equals id.
    /// @param publicFlag  non-zero finds a public key, 0 a private one.
    /// @retval E_FAIL  none, or a Cryptoki failure; handle is untouched.
    virtual HRESULT GetPubPriKeyHandle(CK_OBJECT_HANDLE* handle, int publicFlag, ULONG keyType,
                                       const char* id);

    /// The owning provider; null when there is none or it is of another kind.
    TokenProvider_pkcs11* GetTokenProvider() const;

    CK_SESSION_HANDLE GetSession() const { return m_hSession; }

    /// Calls an entry point of the module this token was opened with.
    /// @return as TokenProvider_pkcs11::Call; CKR_CRYPTOKI_NOT_INITIALIZED also when that module
    ///         was unloaded since.
    template <class... Parameters, class... Arguments>
    CK_RV Call(CK_RV (*CK_FUNCTIONS::*entry)(Parameters...), Arguments... arguments) const {
        const TokenProvider_pkcs11* provider = GetTokenProvider();
        if (!provider || provider->GetModuleChanges() != m_nModuleChanges) {
            return CKR_CRYPTOKI_NOT_INITIALIZED;
        }
        return provider->Call(entry, arguments...);
    }

private:
    HRESULT ReadTextField(const char* operation, CK_UTF8CHAR* (*field)(CK_TOKEN_INFO*),
                          std::size_t width, BSTR* out, unsigned int line = __builtin_LINE());
    HRESULT ReadMemorySize(const char* operation, CK_ULONG CK_TOKEN_INFO::*size, VARIANT* result,
                           unsigned int line = __builtin_LINE());
    HRESULT NotImplemented(const char* operation, unsigned int line = __builtin_LINE()) const;
    bool FindPubKeyData(const char* id, TokenAttributes* read, const LogScope& scope) const;

    CK_SLOT_ID m_ulSlotID = 0;
    int m_bLogin = 0;
    int m_nLoginType = 0;
    char m_szPIN[128];
    char m_szAlgoList[500] = {};
    char m_szDigestList[500] = {};
    void* m_pApplication = nullptr;
    CK_SESSION_HANDLE m_hSession = 0;
    TokenProvider_pkcs11* m_pProvider;
    unsigned int m_nModuleChanges = 0;
};
