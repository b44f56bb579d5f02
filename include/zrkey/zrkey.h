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
//
// QueryInterface answers IID_ISupportErrorInfo alone, and E_NOTIMPL for IUnknown, IDispatch and an
// object's own identifier: hosts hold the interfaces that they were handed. GetIDsOfNames resolves
// one name, case-sensitively, and answers E_FAIL for an unknown one. Invoke takes the arguments in
// natural order: rgvarg[0] is the first. It presets the result, which is not cleared first.
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
    /// @retval E_FAIL         path is null, too long or no loadable library, C_Initialize failed, or
    ///                        the configuration is missing or has no "driver" (the module then stays
    ///                        loaded); also where memory is short for the path or the configuration.
    /// @retval E_OUTOFMEMORY  no memory for the module's functions, or the library has no usable
    ///                        C_GetFunctionList.
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
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   name is null.
    /// @retval E_OUTOFMEMORY  memory is short.
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
    /// @retval S_OK           out receives the text.
    /// @retval E_INVALIDARG   out is null.
    /// @retval E_FAIL         the token does not answer; out is untouched.
    /// @retval E_OUTOFMEMORY  memory is short; out is untouched.
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
    /// @param result  a valid variant, VT_EMPTY at least; cleared first.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        the token does not answer; result is untouched.
    /// @note What VariantClear answers for a variant that cannot be cleared is passed on.
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
    /// @param pin   borrowed; converted to UTF-8; at most 127 bytes.
    /// @param type  0 user, 1 security officer.
    /// @retval S_OK          logged in, also after one logout and retry on an existing login.
    /// @retval E_INVALIDARG  type is neither 0 nor 1; nothing changed.
    /// @retval E_FAIL        any Cryptoki failure, or a null or over-long PIN; then not logged in.
    /// @note Wrong, locked and removed are not told apart; hosts rely on the one code.
    virtual HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) = 0;
    /// @retval S_OK  always; nothing is done.
    virtual HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE Lock(VARIANT* result) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE Unlock(VARIANT* result) = 0;
    /// Creates an empty data file. A name that exists already gets a second object.
    /// @param name  borrowed; a number from 1 to 65536, at most 127 bytes as UTF-8; it becomes the
    ///              object's label as it stands.
    /// @param file  receives an IKeyFile with one reference. The reserved arguments are ignored.
    /// @retval S_OK           created.
    /// @retval E_INVALIDARG   file is null.
    /// @retval E_FAIL         name is no such number, or the token refuses.
    /// @retval E_OUTOFMEMORY  the object cannot be created.
    /// @note The file is found again under the name's number plus one.
    virtual HRESULT STDMETHODCALLTYPE CreateFile(BSTR name, INT reserved1, INT reserved2,
                                                 INT reserved3, ULONG reserved4, void** file) = 0;
    /// Looks for a data file.
    /// @param name    borrowed; a number from 1 to 65536, one more than the object's label.
    /// @param result  receives VT_I4 1 or 0.
    /// @retval S_OK          it exists, result is 1. The token's object search stays open then.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        it does not exist, name is no such number, or a Cryptoki failure;
    ///                       result is 0.
    virtual HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) = 0;
    /// Opens a data file; its contents are read into memory at once.
    /// @param name  as in FileExists.
    /// @param file  receives an IKeyFile with one reference. A value that cannot be read opens as
    ///              an empty file.
    /// @retval S_OK           opened.
    /// @retval E_INVALIDARG   file is null.
    /// @retval E_FAIL         no such file, or a Cryptoki failure.
    /// @retval E_OUTOFMEMORY  the object cannot be created.
    virtual HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT* result) = 0;
    /// Destroys a data file.
    /// @param name  as in FileExists.
    /// @retval S_OK    destroyed.
    /// @retval E_FAIL  it cannot be opened or destroyed.
    /// @note Each deletion keeps one reference to the token: its session stays open until Unload.
    virtual HRESULT STDMETHODCALLTYPE DeleteFile(BSTR name) = 0;
    /// @param out  receives "MD5".
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   out is null.
    /// @retval E_OUTOFMEMORY  memory is short.
    virtual HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR* out) = 0;
    /// Digests data in the host; the token is not asked.
    /// @param method  borrowed; "MD5" (RFC 1321), exactly.
    /// @param data    borrowed; VT_ARRAY | VT_UI1 of one dimension.
    /// @param result  receives VT_ARRAY | VT_UI1 of 16 bytes; overwritten, not cleared.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  data is of another type, result is null, or another method.
    /// @retval E_FAIL        memory is short.
    virtual HRESULT STDMETHODCALLTYPE DigestData(BSTR method, VARIANT data, VARIANT* result) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE CreateContainer(BSTR name, void** container) = 0;
    /// Counts the containers: the certificates on the token.
    /// @param result  receives VT_UI4. A failure of the token ends the count early.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  result is null.
    virtual HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT* result) = 0;
    /// Opens a container.
    /// @param which      borrowed; VT_BSTR its name, or VT_I4 its position in EnumContainer's list.
    ///                   Any other type matches none.
    /// @param container  receives an IKeyContainer with one reference.
    /// @retval S_OK           opened.
    /// @retval E_INVALIDARG   container is null.
    /// @retval E_FAIL         no such container, or its name has 128 bytes or more.
    /// @retval E_OUTOFMEMORY  the object cannot be created.
    virtual HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT which, void** container) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT which) = 0;
    /// Lists the containers' names, the CKA_ID of their certificates read as text.
    /// @param reserved  ignored.
    /// @param result    receives VT_ARRAY | VT_BSTR, one-dimensional, in the token's order; left
    ///                  untouched when there is none.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        memory is short.
    virtual HRESULT STDMETHODCALLTYPE EnumContainer(INT reserved, VARIANT* result) = 0;
    /// As IKeyCertificate::GetCertData.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  an argument is null.
    /// @retval E_FAIL        any failure of the certificate.
    virtual HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate* certificate,
                                                  VARIANT* result) = 0;
    /// Hands out the CKA_ID of the first public key whose CKA_KEY_TYPE, read as text, equals the
    /// certificate's ID. The type of an RSA key reads as the empty text: only a certificate with an
    /// empty ID finds one.
    /// @param result  receives VT_ARRAY | VT_UI1; overwritten, not cleared.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  an argument is null.
    /// @retval E_FAIL        no match, or a Cryptoki failure. Otherwise what GetCertID answered.
    virtual HRESULT STDMETHODCALLTYPE GetPubKeyData(IKeyCertificate* certificate,
                                                    VARIANT* result) = 0;
    /// Signs data with the private key of a certificate's container, always by CKM_SHA1_RSA_PKCS
    /// (PKCS #11 v2.40). Needs a login.
    /// @param algorithm  ignored.
    /// @param data       borrowed; VT_ARRAY | VT_UI1 of one dimension; the token hashes it.
    /// @param result     receives VT_ARRAY | VT_UI1, at most 1024 bytes, over an array whose own
    ///                   element type is VT_I1; overwritten, not cleared.
    /// @retval S_OK          signed.
    /// @retval E_INVALIDARG  data is of another type, or result or certificate is null.
    /// @retval RPC_E_CANTCALLOUT_INEXTERNALCALL  (0x80010005) not logged in.
    /// @retval E_FAIL        no such key, or a Cryptoki failure. Otherwise what GetCertID answered.
    virtual HRESULT STDMETHODCALLTYPE SignData(BSTR algorithm, VARIANT data,
                                               IKeyCertificate* certificate, VARIANT* result) = 0;
    /// Verifies a signature with the public key of a certificate's container; data, login and
    /// mechanism as in SignData.
    /// @retval S_OK          the signature verifies.
    /// @retval E_INVALIDARG  data or signature is of another type, or certificate is null.
    /// @retval RPC_E_CANTCALLOUT_INEXTERNALCALL  (0x80010005) not logged in.
    /// @retval E_FAIL        it does not verify, or could not be verified: the two are not told
    ///                       apart. Otherwise what GetCertID answered.
    virtual HRESULT STDMETHODCALLTYPE VerifyData(VARIANT data, IKeyCertificate* certificate,
                                                 BSTR algorithm, VARIANT signature) = 0;
    /// @retval S_OK  always; nothing is verified.
    virtual HRESULT STDMETHODCALLTYPE VerifyDataByCert(VARIANT data, IKeyCertificate* certificate,
                                                       VARIANT certificateData, BSTR algorithm,
                                                       VARIANT signature) = 0;
    /// @retval E_FAIL  always; nothing is verified.
    virtual HRESULT STDMETHODCALLTYPE VerifyDataByPubKey(VARIANT data, IKeyCertificate* certificate,
                                                         VARIANT publicKey, BSTR algorithm,
                                                         VARIANT signature) = 0;
    /// @param out  receives the algorithm list of the configuration, unchanged.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   out is null.
    /// @retval E_OUTOFMEMORY  memory is short.
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

/// A data file of a token, held in memory. Keeps its token alive.
struct IKeyFile : public IDispatch {
    /// Frees the contents; nothing is written back. Then only Release is of use.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    /// Writes the contents to the token's object as its whole value.
    /// @retval S_OK    done.
    /// @retval E_FAIL  the token refuses, or the file was closed.
    virtual HRESULT STDMETHODCALLTYPE Flush() = 0;
    /// @retval E_INVALIDARG  always; nothing is changed.
    virtual HRESULT STDMETHODCALLTYPE Write(VARIANT data) = 0;
    /// Reads from the position and moves it on.
    /// @param length  bytes.
    /// @param data    receives VT_ARRAY | VT_UI1 over an array whose own element type is VT_I1;
    ///                overwritten, not cleared.
    /// @retval S_OK          done; also, with data untouched, when memory for the array is short.
    /// @retval E_INVALIDARG  data is null.
    /// @retval E_FAIL        fewer bytes are left, or any are asked for of a closed file; nothing is
    ///                       read.
    virtual HRESULT STDMETHODCALLTYPE Read(ULONG length, VARIANT* data) = 0;
    /// @param size  receives VT_I4, bytes.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  size is null.
    virtual HRESULT STDMETHODCALLTYPE GetSize(VARIANT* size) = 0;
    /// Moves the position; one that is not inside the contents, their end included, is ignored.
    /// @param offset  bytes.
    /// @param origin  0 from the beginning, 1 from the position, 2 from the end; an offset of 0 from
    ///                the end goes to the beginning. Any other origin is ignored.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE Seek(LONG offset, INT origin) = 0;
};

/// A key container: one certificate of the token with its key pair. Keeps its token alive.
struct IKeyContainer : public IDispatch {
    /// @retval S_OK  always; nothing is done.
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    /// @param type  receives the certificate's CKA_CERTIFICATE_TYPE read as text: empty for X.509.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   type is null.
    /// @retval E_OUTOFMEMORY  memory is short.
    virtual HRESULT STDMETHODCALLTYPE GetType(BSTR* type) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE ImportCertificate(bool signing, VARIANT certificate) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE ExportCertificate(bool signing, VARIANT* certificate) = 0;
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GenKeyPair(VARIANT* result) = 0;
    /// Hands out the container's certificate, a new object each time.
    /// @param signing      ignored: a container has one certificate.
    /// @param certificate  receives an IKeyCertificate with one reference.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   certificate is null.
    /// @retval E_OUTOFMEMORY  the object cannot be created.
    virtual HRESULT STDMETHODCALLTYPE GetKeyCert(bool signing, void** certificate) = 0;
};

/// The certificate of a container. Keeps its container alive.
struct IKeyCertificate : public IDispatch {
    /// Reads the certificate from the token, found by its ID; of two with one ID, the first.
    /// @param data  receives VT_ARRAY | VT_UI1, the certificate as stored (DER); overwritten, not
    ///              cleared.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  data is null.
    /// @retval E_FAIL        it is not found, or memory is short.
    virtual HRESULT STDMETHODCALLTYPE GetCertData(VARIANT* data) = 0;
    /// @param id  receives the name of the container.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   id is null.
    /// @retval E_FAIL         the certificate has no container.
    /// @retval E_OUTOFMEMORY  memory is short.
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
