// The public interface of the library: identifiers, object interfaces and the one export.
//
// A host loads the library, asks ZCLGetClassObject for the class factory, creates a provider and
// goes on from there:
//
//     IClassFactory* factory = nullptr;
//     ITokenProvider* provider = nullptr;
//     ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, reinterpret_cast<void**>(&factory));
//     factory->CreateInstance(nullptr, IID_ITokenProvider, reinterpret_cast<void**>(&provider));
//
// Every object is reference-counted and used from one thread at a time. Strings and variants that
// an operation hands out belong to the caller; those passed in are borrowed. Every operation
// returns an HRESULT; the slot order is part of the binary contract.
#ifndef ZRKEY_ZRKEY_H
#define ZRKEY_ZRKEY_H

#include <zrkey/automation.h>

#ifdef _WIN32
#ifdef ZRKEY_BUILD
#define ZRKEY_EXPORT __declspec(dllexport)
#else
#define ZRKEY_EXPORT __declspec(dllimport)
#endif
#else
#define ZRKEY_EXPORT __attribute__((visibility("default")))
#endif

/// The class identifier that ZCLGetClassObject accepts.
static const GUID LIBID_ZRKey = {
    0xA453F02B, 0x23F9, 0x43F2, {0xAF, 0x82, 0x30, 0x1C, 0x1A, 0xE7, 0x54, 0x89}};
/// The interface that the class factory creates.
static const GUID IID_ITokenProvider = {
    0x34DF3135, 0x4C7D, 0x4000, {0x83, 0x84, 0x6B, 0x48, 0xE2, 0x13, 0xF3, 0xFA}};
// Declared for hosts that name them; no operation of the library compares them.
static const GUID IID_IKeyManager = {
    0x7FE68A62, 0x9B82, 0x44E9, {0x99, 0x0E, 0xC9, 0xDB, 0x7F, 0x9A, 0x9E, 0x94}};
static const GUID IID_ITokenProviderIPC = {
    0x7A20E9EE, 0xFBCB, 0x4FFA, {0xB2, 0xA6, 0x3E, 0x6B, 0x2E, 0xBF, 0x6E, 0x8B}};
static const GUID IID_IKeyFile = {
    0x03EE18DE, 0x8637, 0x4C69, {0x90, 0x8E, 0x7B, 0x47, 0x79, 0xF0, 0xB8, 0xDA}};
static const GUID IID_IKeyContainer = {
    0x658B212F, 0x2A70, 0x4C93, {0xBD, 0x24, 0x46, 0x89, 0x98, 0xA2, 0xA3, 0x21}};
static const GUID IID_IKeyCertificate = {
    0xCBE939EF, 0xEE3C, 0x412D, {0x87, 0x2C, 0x58, 0x8E, 0x48, 0xA8, 0x6F, 0xA5}};
static const GUID IID_IKeyObject = {
    0x51A29A58, 0xC94A, 0x4EA4, {0xB8, 0xCC, 0x69, 0xB9, 0x6B, 0x10, 0x86, 0x97}};
static const GUID IID_IKeyDevice = {
    0x57E1E167, 0xBBA4, 0x484B, {0x83, 0x59, 0x63, 0x00, 0xB7, 0xC9, 0x08, 0x1D}};
static const GUID IID_IZCLRegister = {
    0x89FA0249, 0x2B8A, 0x44BC, {0xBD, 0xA4, 0xCB, 0x60, 0xBE, 0x03, 0xAA, 0x2E}};

/// Loads a PKCS #11 module, counts its tokens and opens them.
struct ITokenProvider : public IDispatch {
    /// Loads and initialises a module, then reads "config.xml" of the current directory.
    /// @param path  borrowed; always taken relative to the current directory, an absolute path too.
    /// @retval S_OK           loaded, initialised and configured.
    /// @retval E_FAIL         not a loadable library, C_Initialize failed, or the configuration is
    ///                        missing or has no "driver" (the module then stays loaded).
    /// @retval E_OUTOFMEMORY  memory is short, or the library has no usable C_GetFunctionList.
    /// @note A second Load loads again and does not release the earlier module.
    virtual HRESULT STDMETHODCALLTYPE Load(BSTR path) = 0;
    /// Finalises and frees the module. Tokens opened before can then only be released.
    /// @retval S_OK  always, also with no module loaded.
    virtual HRESULT STDMETHODCALLTYPE Unload() = 0;
    /// Opens a token with a read/write session.
    /// @param index  from 0, among the slots that hold a token.
    /// @param key    receives an IKeyObject with one reference.
    /// @retval S_OK           opened; also, with *key untouched, when the slots changed meanwhile.
    /// @retval E_INVALIDARG   index is negative or key is null.
    /// @retval E_FAIL         nothing is loaded, no such slot, or a Cryptoki failure.
    /// @retval E_OUTOFMEMORY  the object cannot be created.
    /// @note Preset *key to null and look at it: S_OK alone does not say that a token was opened.
    virtual HRESULT STDMETHODCALLTYPE OpenKey(LONG index, void** key) = 0;
    /// @param name  receives "PKCS#11".
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  name is null.
    virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* name) = 0;
    /// @param count  receives the number of slots that hold a token; 0 on failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  count is null.
    /// @retval E_FAIL        nothing is loaded, or a Cryptoki failure.
    virtual HRESULT STDMETHODCALLTYPE GetKeyCount(INT* count) = 0;
    /// @retval S_OK  always; serial is left untouched (see IKeyObject::GetSerialNumber).
    virtual HRESULT STDMETHODCALLTYPE GetKeySN(LONG index, BSTR* serial) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE LoadFinish(INT* done) = 0;
};

struct IKeyCertificate;

/// One token in one slot, with its session. Type arguments: 0 user, 1 security officer.
struct IKeyObject : public IDispatch {
    /// The text fields of the token without the blanks at their end.
    /// @retval S_OK          out receives the text.
    /// @retval E_INVALIDARG  out is null.
    /// @retval E_FAIL        the token does not answer; out is untouched.
    virtual HRESULT STDMETHODCALLTYPE GetSerialNumber(BSTR* out) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE SetLabel(BSTR* label, VARIANT* result) = 0;
    /// @copydoc GetSerialNumber
    virtual HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) = 0;
    /// @copydoc GetSerialNumber
    virtual HRESULT STDMETHODCALLTYPE GetManufacturerID(BSTR* out) = 0;
    /// @copydoc GetSerialNumber
    virtual HRESULT STDMETHODCALLTYPE GetModelID(BSTR* out) = 0;
    /// Public memory in bytes, as VT_UI4; 0xFFFFFFFF when the token does not tell.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        the token does not answer.
    virtual HRESULT STDMETHODCALLTYPE GetTotalSize(VARIANT* result) = 0;
    /// @copydoc GetTotalSize
    virtual HRESULT STDMETHODCALLTYPE GetFreeSize(VARIANT* result) = 0;
    /// Changes a PIN; the object ends logged in under type.
    /// @param oldPin, newPin  borrowed, 4 to 8 bytes in UTF-8.
    /// @retval S_OK          changed.
    /// @retval E_INVALIDARG  a PIN is shorter or longer; the token is not touched.
    /// @retval E_FAIL        the login with oldPin or the change was refused.
    virtual HRESULT STDMETHODCALLTYPE ModifyPIN(BSTR oldPin, BSTR newPin, INT type) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT type, VARIANT* result) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT type, VARIANT* result) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT type, VARIANT* result) = 0;
    /// Logs in to the token.
    /// @param pin   borrowed; converted to UTF-8; null reads as empty; at most 127 bytes.
    /// @param type  0 user, 1 security officer.
    /// @retval S_OK          logged in, also after one logout and retry on an existing login.
    /// @retval E_INVALIDARG  type is neither 0 nor 1; nothing changed.
    /// @retval E_FAIL        any Cryptoki failure or an over-long PIN; then not logged in.
    /// @note Wrong, locked and removed are not told apart; hosts rely on the one code.
    virtual HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) = 0;
    /// @retval S_OK  always; nothing is done.
    virtual HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE Lock(VARIANT* result) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE Unlock(VARIANT* result) = 0;
    /// Creates an empty data file.
    /// @param name   borrowed; a number from 1 to 65536.
    /// @param file   receives an IKeyFile with one reference.
    /// @note The file is found again under the name's number plus one.
    virtual HRESULT STDMETHODCALLTYPE CreateFile(BSTR name, INT reserved1, INT reserved2,
                                                 INT reserved3, ULONG reserved4, void** file) = 0;
    /// @param result  receives VT_I4 1 or 0.
    virtual HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteFile(BSTR name) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR* out) = 0;
    virtual HRESULT STDMETHODCALLTYPE DigestData(BSTR method, VARIANT data, VARIANT* result) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE CreateContainer(BSTR name, void** container) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT which, void** container) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT which) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumContainer(INT reserved, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate* certificate,
                                                  VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPubKeyData(IKeyCertificate* certificate,
                                                    VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE SignData(BSTR algorithm, VARIANT data,
                                               IKeyCertificate* certificate,
                                               VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE VerifyData(VARIANT data, IKeyCertificate* certificate,
                                                 BSTR algorithm, VARIANT signature) = 0;
    /// @retval S_OK  always; nothing is verified.
    virtual HRESULT STDMETHODCALLTYPE VerifyDataByCert(VARIANT data, IKeyCertificate* certificate,
                                                       VARIANT certificateData, BSTR algorithm,
                                                       VARIANT signature) = 0;
    /// @retval E_FAIL  always; nothing is verified.
    virtual HRESULT STDMETHODCALLTYPE VerifyDataByPubKey(VARIANT data,
                                                         IKeyCertificate* certificate,
                                                         VARIANT publicKey, BSTR algorithm,
                                                         VARIANT signature) = 0;
    /// @param out  receives the algorithm list of the configuration, unchanged.
    virtual HRESULT STDMETHODCALLTYPE GetSignAlgo(BSTR* out) = 0;
    /// @retval S_OK  always; out is left untouched.
    virtual HRESULT STDMETHODCALLTYPE GetKeyObjectClassName(BSTR* out) = 0;
    /// @copydoc GetKeyObjectClassName
    virtual HRESULT STDMETHODCALLTYPE GetCaLibPath(BSTR* out) = 0;
    /// @copydoc GetKeyObjectClassName
    virtual HRESULT STDMETHODCALLTYPE GetCSPName(BSTR* out) = 0;
    /// @copydoc GetSignAlgo
    virtual HRESULT STDMETHODCALLTYPE GetAlgoList(BSTR* out) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GetZRHardApiInfo(void** api, BSTR* info) = 0;
};

/// A data file of a token, held in memory.
struct IKeyFile : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    virtual HRESULT STDMETHODCALLTYPE Flush() = 0;
    virtual HRESULT STDMETHODCALLTYPE Write(VARIANT data) = 0;
    virtual HRESULT STDMETHODCALLTYPE Read(ULONG length, VARIANT* data) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSize(VARIANT* size) = 0;
    virtual HRESULT STDMETHODCALLTYPE Seek(LONG offset, INT origin) = 0;
};

/// A key container: one certificate of the token with its key pair.
struct IKeyContainer : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetType(BSTR* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ImportCertificate(bool signing, VARIANT certificate) = 0;
    virtual HRESULT STDMETHODCALLTYPE ExportCertificate(bool signing, VARIANT* certificate) = 0;
    virtual HRESULT STDMETHODCALLTYPE GenKeyPair(VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetKeyCert(bool signing, void** certificate) = 0;
};

/// The certificate of a container.
struct IKeyCertificate : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE GetCertData(VARIANT* data) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) = 0;
};

/// Hands out a new class factory.
/// @param rclsid  LIBID_ZRKey.
/// @param riid    IID_IClassFactory.
/// @param ppv     receives the factory with one reference.
/// @retval S_OK           done.
/// @retval E_INVALIDARG   ppv is null.
/// @retval E_NOTIMPL      another class identifier.
/// @retval E_NOINTERFACE  another interface; the provider is reached through the factory only.
/// @retval E_OUTOFMEMORY  memory is short.
extern "C" ZRKEY_EXPORT HRESULT STDMETHODCALLTYPE ZCLGetClassObject(const GUID& rclsid,
                                                                    const GUID& riid, void** ppv);

#endif
