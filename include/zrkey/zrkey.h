/// @file
/// The public interface of the library: identifiers, object interfaces and the one export.
///
/// A host loads the library, asks ZCLGetClassObject for the class factory, creates a provider and
/// goes on from there:
///
///     IClassFactory* factory = nullptr;
///     ITokenProvider* provider = nullptr;
///     ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, reinterpret_cast<void**>(&factory));
///     factory->CreateInstance(nullptr, IID_ITokenProvider, reinterpret_cast<void**>(&provider));
///
/// Every object is reference-counted and is used from one thread at a time. Strings, variants and
/// objects that an operation returns belong to the caller; arguments are borrowed for the call.
/// Every operation returns an HRESULT; its documentation lists all results. The slot order is part
/// of the binary contract.
///
/// CreateInstance of the factory returns a new provider with one reference for IID_ITokenProvider.
/// For IID_IClassFactory it returns the factory itself without adding a reference: the caller holds
/// one already and releases only that one.
///
/// QueryInterface returns S_OK for IID_ISupportErrorInfo only, and E_NOTIMPL for every other
/// identifier, IID_IUnknown and IID_IDispatch included: keep the pointers that the operations
/// return. A provider asked for IID_ITokenProvider answers E_NOTIMPL too, but stores its own
/// pointer, without a reference: do not release it.
///
/// GetIDsOfNames resolves the first name, case-sensitively, and returns E_FAIL for an unknown one.
/// Invoke takes the arguments in the order in which they are written: rgvarg[0] is the first. It
/// sets the result to VT_EMPTY first, without clearing what the variant holds.
#ifndef ZRKEY_ZRKEY_H
#define ZRKEY_ZRKEY_H

#ifndef __cplusplus
#error "C hosts include zrkey/zrkey_c.h"
#endif

#include <zrkey/automation.h>
#include <zrkey/identifiers.h>

/// Loads a PKCS #11 module, counts its tokens and opens them.
struct ITokenProvider : public IDispatch {
    /// Loads a module, initialises it and reads "config.xml" in the current directory.
    /// @param path  the module's path. It is always taken relative to the current directory, even
    ///              when it begins with a separator.
    /// @retval S_OK           loaded, initialised and configured.
    /// @retval E_FAIL         path is null, too long or names no loadable library; C_Initialize
    ///                        failed; out of memory for the path; or the configuration is missing,
    ///                        no regular file, larger than 1 MiB, has no "driver" or cannot be
    ///                        read. After a failure of the configuration the module stays loaded
    ///                        and usable.
    /// @retval E_OUTOFMEMORY  out of memory for the module's functions, or the library has no
    ///                        usable C_GetFunctionList.
    /// @note The current directory, a separator and path must fit 259 bytes. What is left of a path
    ///       that climbs above the root goes to the system's loader as it is.
    /// @note The algorithm and the digest list of the configuration hold 499 bytes each. Each Load
    ///       appends the configured texts to what its provider has. A text that does not fit any
    ///       more leaves its list as it is, and Load succeeds; a text of 500 bytes or more is
    ///       E_FAIL.
    /// @note On Linux a path with "$ORIGIN", "$LIB" or "$PLATFORM" in it is E_FAIL, and so is every
    ///       Load in a directory with a backslash in its name: another file would be loaded.
    /// @note A further Load does not release the earlier module. Tokens opened before go on with
    ///       the module they were opened with.
    virtual HRESULT STDMETHODCALLTYPE Load(BSTR path) = 0;
    /// Finalises and frees the module that was loaded last. C_Finalize acts on the whole process:
    /// every token opened on this module, by whichever provider, fails every operation that needs
    /// the module from then on; only release it.
    /// @retval S_OK  always, also when no module is loaded.
    /// @note A module that an earlier Load of this provider loaded stays loaded; its tokens go on.
    virtual HRESULT STDMETHODCALLTYPE Unload() = 0;
    /// Opens a token with a read/write session.
    /// @param index  index from 0 among the slots that hold a token.
    /// @param key    receives an IKeyObject with one reference; untouched unless a token was
    ///               opened.
    /// @retval S_OK           opened; or not opened, because the slots changed during the call or
    ///                        could not be listed a second time.
    /// @retval E_INVALIDARG   index is negative or key is null.
    /// @retval E_FAIL         no module is loaded, there is no such slot, or a Cryptoki call
    ///                        failed.
    /// @retval E_OUTOFMEMORY  out of memory for the object.
    /// @note Set *key to null before the call and test it afterwards: S_OK alone does not mean that
    ///       a token was opened.
    virtual HRESULT STDMETHODCALLTYPE OpenKey(LONG index, void** key) = 0;
    /// @param name  receives "PKCS#11".
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   name is null.
    /// @retval E_OUTOFMEMORY  out of memory; name is untouched.
    virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* name) = 0;
    /// Counts the slots that hold a token.
    /// @param count  receives the number; 0 on failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  count is null.
    /// @retval E_FAIL        no module is loaded, or a Cryptoki call failed.
    virtual HRESULT STDMETHODCALLTYPE GetKeyCount(INT* count) = 0;
    /// Does nothing; use IKeyObject::GetSerialNumber.
    /// @param index   ignored.
    /// @param serial  left untouched.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE GetKeySN(LONG index, BSTR* serial) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE LoadFinish(INT* done) = 0;
};

struct IKeyCertificate;

/// One token in one slot, with its session. Keeps its provider alive. PIN types are 0 for the user
/// and 1 for the security officer.
struct IKeyObject : public IDispatch {
    /// Reads a text field of the token.
    /// @param out  receives the text without the blanks at its end; untouched on failure.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   out is null.
    /// @retval E_FAIL         C_GetTokenInfo failed.
    /// @retval E_OUTOFMEMORY  out of memory.
    virtual HRESULT STDMETHODCALLTYPE GetSerialNumber(BSTR* out) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE SetLabel(BSTR* label, VARIANT* result) = 0;
    /// @copydoc GetSerialNumber
    virtual HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) = 0;
    /// @copydoc GetSerialNumber
    virtual HRESULT STDMETHODCALLTYPE GetManufacturerID(BSTR* out) = 0;
    /// @copydoc GetSerialNumber
    virtual HRESULT STDMETHODCALLTYPE GetModelID(BSTR* out) = 0;
    /// Reads the size of the token's public memory.
    /// @param result  an initialised variant. It is cleared and receives VT_UI4, in bytes;
    ///                0xFFFFFFFF when the token does not report the size. Untouched on failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        C_GetTokenInfo failed.
    /// @note When VariantClear cannot clear result, its result is returned.
    virtual HRESULT STDMETHODCALLTYPE GetTotalSize(VARIANT* result) = 0;
    /// @copydoc GetTotalSize
    virtual HRESULT STDMETHODCALLTYPE GetFreeSize(VARIANT* result) = 0;
    /// Changes a PIN: logs out, logs in with the old PIN and sets the new one. The object is then
    /// logged in under type.
    /// @param oldPin  4 to 8 bytes in UTF-8.
    /// @param newPin  4 to 8 bytes in UTF-8.
    /// @param type    0 user, 1 security officer.
    /// @retval S_OK          changed.
    /// @retval E_INVALIDARG  a PIN is null or its length is out of range; nothing was changed.
    /// @retval E_FAIL        type is neither 0 nor 1, or the token refused the old PIN: the object
    ///                       is then not logged in, even if it was before. Or C_SetPIN failed: the
    ///                       object is then logged in with the old PIN.
    virtual HRESULT STDMETHODCALLTYPE ModifyPIN(BSTR oldPin, BSTR newPin, INT type) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT type, VARIANT* result) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT type, VARIANT* result) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT type, VARIANT* result) = 0;
    /// Logs in to the token.
    /// @param pin   at most 127 bytes in UTF-8.
    /// @param type  0 user, 1 security officer.
    /// @retval S_OK          logged in; a login that the token reports is replaced.
    /// @retval E_INVALIDARG  type is neither 0 nor 1; nothing was changed.
    /// @retval E_FAIL        pin is null or too long, or C_Login failed. The object is then not
    ///                       logged in, even if it was before.
    /// @note A wrong PIN, a locked PIN and a removed token all give E_FAIL; hosts rely on this.
    virtual HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) = 0;
    /// Does nothing.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE Lock(VARIANT* result) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE Unlock(VARIANT* result) = 0;
    /// Creates an empty data file. When there is a file of this name already, a second is created.
    /// @param name       a number from 1 to 65536 in decimal, at most 127 bytes in UTF-8. The text
    ///                   becomes the label of the token's object unchanged.
    /// @param reserved1  ignored.
    /// @param reserved2  ignored.
    /// @param reserved3  ignored.
    /// @param reserved4  ignored.
    /// @param file       receives an IKeyFile with one reference; untouched on failure.
    /// @retval S_OK           created.
    /// @retval E_INVALIDARG   file is null.
    /// @retval E_FAIL         name is no such number, or C_CreateObject failed.
    /// @retval E_OUTOFMEMORY  out of memory for the object.
    /// @note FileExists, OpenFile and DeleteFile find the file under its number plus one: a file
    ///       created as 7 is found as 8.
    virtual HRESULT STDMETHODCALLTYPE CreateFile(BSTR name, INT reserved1, INT reserved2,
                                                 INT reserved3, ULONG reserved4, void** file) = 0;
    /// Looks for a data file.
    /// @param name    a number from 1 to 65536: that of the object's label plus one.
    /// @param result  receives VT_I4, 1 when the file exists, else 0; overwritten, not cleared.
    /// @retval S_OK          the file exists.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        the file does not exist, name is no such number, or a Cryptoki call
    ///                       failed.
    /// @note S_OK leaves the object search of the token's session open. With a module that allows
    ///       one search at a time, as most do:
    ///       - FileExists, OpenFile and DeleteFile fail with E_FAIL until the search is closed;
    ///       - SignData and VerifyData fail with E_FAIL once and close it;
    ///       - GetContainerCount and the other operations on containers and certificates go on
    ///         with the open search instead of their own, so they see data files: the count is
    ///         wrong, usually 0, the list is incomplete, a container is not found. They close the
    ///         search; the next call is right.
    ///       After S_OK, call GetContainerCount once and ignore its count.
    virtual HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* result) = 0;
    /// Opens a data file and reads its contents into memory.
    /// @param name  as in FileExists.
    /// @param file  receives an IKeyFile with one reference; untouched on failure.
    /// @retval S_OK           opened. When the token does not report the length of the contents,
    ///                        the file opens empty: see IKeyFile::Flush.
    /// @retval E_INVALIDARG   file is null.
    /// @retval E_FAIL         there is no such file, a search is open (see FileExists), a Cryptoki
    ///                        call failed, or out of memory for the contents.
    /// @retval E_OUTOFMEMORY  out of memory for the object.
    virtual HRESULT STDMETHODCALLTYPE OpenFile(BSTR name, void** file) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE EnumFiles(VARIANT* result) = 0;
    /// Destroys a data file.
    /// @param name  as in FileExists.
    /// @retval S_OK    destroyed.
    /// @retval E_FAIL  the file cannot be opened (see OpenFile) or destroyed.
    /// @note Each deletion keeps a reference to the token: the object stays in memory until the
    ///       process ends. Its session stays open, and its login lasts, until the token's module is
    ///       unloaded.
    virtual HRESULT STDMETHODCALLTYPE DeleteFile(BSTR name) = 0;
    /// @param out  receives "MD5".
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   out is null.
    /// @retval E_OUTOFMEMORY  out of memory; out is untouched.
    virtual HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR* out) = 0;
    /// Computes a digest in the library; the token is not used.
    /// @param method  "MD5" (RFC 1321), in capitals.
    /// @param data    VT_ARRAY | VT_UI1 of one dimension.
    /// @param result  receives VT_ARRAY | VT_UI1 of 16 bytes; overwritten, not cleared. Untouched
    ///                on failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  data is of another type, result is null, or method is another text.
    /// @retval E_FAIL        data cannot be accessed, or out of memory.
    virtual HRESULT STDMETHODCALLTYPE DigestData(BSTR method, VARIANT data, VARIANT* result) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE CreateContainer(BSTR name, void** container) = 0;
    /// Counts the containers, that is the certificates on the token.
    /// @param result  receives VT_UI4; overwritten, not cleared.
    /// @retval S_OK          done. A Cryptoki call that fails ends the count early and is not
    ///                       reported.
    /// @retval E_INVALIDARG  result is null.
    /// @note A search that FileExists left open makes the count wrong: see there.
    virtual HRESULT STDMETHODCALLTYPE GetContainerCount(VARIANT* result) = 0;
    /// Opens a container.
    /// @param which      VT_BSTR, its name, or VT_I4, its index from 0 in the list of
    ///                   EnumContainer. Any other type finds none.
    /// @param container  receives an IKeyContainer with one reference; untouched on failure.
    /// @retval S_OK           opened; of several containers of one name, the first.
    /// @retval E_INVALIDARG   container is null.
    /// @retval E_FAIL         there is no such container, or its name has 128 bytes or more.
    /// @retval E_OUTOFMEMORY  out of memory for the object.
    virtual HRESULT STDMETHODCALLTYPE OpenContainer(VARIANT which, void** container) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE DeleteContainer(VARIANT which) = 0;
    /// Lists the names of the containers: the CKA_ID of their certificates, read as text.
    /// @param reserved  ignored.
    /// @param result    receives VT_ARRAY | VT_BSTR of one dimension, in the order of the token;
    ///                  overwritten, not cleared. Untouched when there is no container, and on
    ///                  failure.
    /// @retval S_OK          done. A Cryptoki call that fails ends the list early and is not
    ///                       reported.
    /// @retval E_INVALIDARG  result is null.
    /// @retval E_FAIL        out of memory.
    virtual HRESULT STDMETHODCALLTYPE EnumContainer(INT reserved, VARIANT* result) = 0;
    /// Reads a certificate by its IKeyCertificate::GetCertData.
    /// @param certificate  the certificate.
    /// @param result       receives what GetCertData returns.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  an argument is null.
    /// @retval E_FAIL        GetCertData failed, whatever its result.
    virtual HRESULT STDMETHODCALLTYPE GetCertData(IKeyCertificate* certificate,
                                                  VARIANT* result) = 0;
    /// Reads the CKA_ID of the first public key whose CKA_KEY_TYPE, read as text, equals the ID of
    /// a certificate. The type of an RSA key reads as the empty text, so only a certificate with an
    /// empty ID finds a key.
    /// @param certificate  the certificate.
    /// @param result       receives VT_ARRAY | VT_UI1; overwritten, not cleared. Untouched on
    ///                     failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  an argument is null.
    /// @retval E_FAIL        no key matches, a Cryptoki call failed, or out of memory.
    /// @note When GetCertID fails, its result is returned.
    virtual HRESULT STDMETHODCALLTYPE GetPubKeyData(IKeyCertificate* certificate,
                                                    VARIANT* result) = 0;
    /// Signs data with the private RSA key of a certificate's container. The mechanism is always
    /// CKM_SHA1_RSA_PKCS (PKCS #11 v2.40): the token hashes the data.
    /// @param algorithm    ignored.
    /// @param data         VT_ARRAY | VT_UI1 of one dimension.
    /// @param certificate  the certificate.
    /// @param result       receives VT_ARRAY | VT_UI1 of at most 1024 bytes; overwritten, not
    ///                     cleared. The element type of the array itself is VT_I1. Untouched on
    ///                     failure.
    /// @retval S_OK          signed.
    /// @retval E_INVALIDARG  data is of another type, or result or certificate is null.
    /// @retval RPC_E_CANTCALLOUT_INEXTERNALCALL  (0x80010005) not logged in.
    /// @retval E_FAIL        there is no such key, a search is open (see FileExists), data cannot
    ///                       be accessed, a Cryptoki call failed, or out of memory.
    /// @note When GetCertID fails, its result is returned.
    virtual HRESULT STDMETHODCALLTYPE SignData(BSTR algorithm, VARIANT data,
                                               IKeyCertificate* certificate, VARIANT* result) = 0;
    /// Verifies a signature with the public RSA key of a certificate's container, by the mechanism
    /// of SignData.
    /// @param data         VT_ARRAY | VT_UI1 of one dimension.
    /// @param certificate  the certificate.
    /// @param algorithm    ignored.
    /// @param signature    VT_ARRAY | VT_UI1 of one dimension.
    /// @retval S_OK          the signature is valid.
    /// @retval E_INVALIDARG  data or signature is of another type, or certificate is null.
    /// @retval RPC_E_CANTCALLOUT_INEXTERNALCALL  (0x80010005) not logged in.
    /// @retval E_FAIL        the signature is not valid, or it could not be verified, for the
    ///                       reasons of SignData.
    /// @note When GetCertID fails, its result is returned.
    virtual HRESULT STDMETHODCALLTYPE VerifyData(VARIANT data, IKeyCertificate* certificate,
                                                 BSTR algorithm, VARIANT signature) = 0;
    /// Does nothing.
    /// @retval S_OK  always: it does not mean that the signature is valid.
    virtual HRESULT STDMETHODCALLTYPE VerifyDataByCert(VARIANT data, IKeyCertificate* certificate,
                                                       VARIANT certificateData, BSTR algorithm,
                                                       VARIANT signature) = 0;
    /// Does nothing.
    /// @retval E_FAIL  always.
    virtual HRESULT STDMETHODCALLTYPE VerifyDataByPubKey(VARIANT data, IKeyCertificate* certificate,
                                                         VARIANT publicKey, BSTR algorithm,
                                                         VARIANT signature) = 0;
    /// @param out  receives the algorithm list of the configuration, unchanged.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   out is null.
    /// @retval E_OUTOFMEMORY  out of memory; out is untouched.
    virtual HRESULT STDMETHODCALLTYPE GetSignAlgo(BSTR* out) = 0;
    /// Does nothing.
    /// @param out  left untouched.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE GetKeyObjectClassName(BSTR* out) = 0;
    /// @copydoc GetKeyObjectClassName
    virtual HRESULT STDMETHODCALLTYPE GetCaLibPath(BSTR* out) = 0;
    /// @copydoc GetKeyObjectClassName
    virtual HRESULT STDMETHODCALLTYPE GetCSPName(BSTR* out) = 0;
    /// @copydoc GetSignAlgo
    virtual HRESULT STDMETHODCALLTYPE GetAlgoList(BSTR* out) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GetZRHardApiInfo(void** api, BSTR* info) = 0;
};

/// A data file of a token, held in memory. Keeps its token alive.
struct IKeyFile : public IDispatch {
    /// Frees the contents without writing them back. After it, only release the file.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    /// Replaces the value of the token's object by the contents.
    /// @retval S_OK    done.
    /// @retval E_FAIL  C_SetAttributeValue failed, or the file was closed.
    /// @note A file whose contents could not be read opens empty: flushing it erases the value.
    virtual HRESULT STDMETHODCALLTYPE Flush() = 0;
    /// Does nothing.
    /// @param data  ignored.
    /// @retval E_INVALIDARG  always.
    virtual HRESULT STDMETHODCALLTYPE Write(VARIANT data) = 0;
    /// Reads bytes at the position and advances it by their number.
    /// @param length  number of bytes.
    /// @param data    receives VT_ARRAY | VT_UI1; overwritten, not cleared. The element type of the
    ///                array itself is VT_I1.
    /// @retval S_OK          done. When out of memory for the array, data is untouched, the
    ///                       position is advanced all the same.
    /// @retval E_INVALIDARG  data is null.
    /// @retval E_FAIL        fewer than length bytes are left, or the file was closed and length is
    ///                       not 0; data and position are untouched.
    virtual HRESULT STDMETHODCALLTYPE Read(ULONG length, VARIANT* data) = 0;
    /// @param size  receives VT_I4, in bytes; overwritten, not cleared.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  size is null.
    virtual HRESULT STDMETHODCALLTYPE GetSize(VARIANT* size) = 0;
    /// Moves the position. A new position outside the contents is ignored; so is their end.
    /// @param offset  in bytes, may be negative.
    /// @param origin  what offset counts from: 0 the beginning, 1 the position, 2 the end. An
    ///                offset of 0 from the end moves to the beginning; a positive one is ignored.
    ///                Any other origin is ignored.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE Seek(LONG offset, INT origin) = 0;
};

/// A key container: one certificate of the token with its key pair. Keeps its token alive.
struct IKeyContainer : public IDispatch {
    /// Does nothing.
    /// @retval S_OK  always.
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    /// @param type  receives the bytes of the certificate's CKA_CERTIFICATE_TYPE read as text:
    ///              empty for X.509, whose type is 0.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   type is null.
    /// @retval E_OUTOFMEMORY  out of memory; type is untouched.
    virtual HRESULT STDMETHODCALLTYPE GetType(BSTR* type) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE ImportCertificate(bool signing, VARIANT certificate) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE ExportCertificate(bool signing, VARIANT* certificate) = 0;
    /// Not implemented.
    /// @retval E_NOTIMPL  always.
    virtual HRESULT STDMETHODCALLTYPE GenKeyPair(VARIANT* result) = 0;
    /// Returns the container's certificate, as a new object each time.
    /// @param signing      ignored: a container has one certificate.
    /// @param certificate  receives an IKeyCertificate with one reference; untouched on failure.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   certificate is null.
    /// @retval E_OUTOFMEMORY  out of memory for the object.
    virtual HRESULT STDMETHODCALLTYPE GetKeyCert(bool signing, void** certificate) = 0;
};

/// The certificate of a container. Keeps its container alive.
struct IKeyCertificate : public IDispatch {
    /// Reads the certificate from the token: the first with this certificate's ID.
    /// @param data  receives VT_ARRAY | VT_UI1, the certificate as stored (DER); overwritten, not
    ///              cleared. Untouched on failure.
    /// @retval S_OK          done.
    /// @retval E_INVALIDARG  data is null.
    /// @retval E_FAIL        the certificate is not found, or out of memory.
    virtual HRESULT STDMETHODCALLTYPE GetCertData(VARIANT* data) = 0;
    /// @param id  receives the name of the container; untouched on failure.
    /// @retval S_OK           done.
    /// @retval E_INVALIDARG   id is null.
    /// @retval E_FAIL         the certificate has no container.
    /// @retval E_OUTOFMEMORY  out of memory.
    virtual HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) = 0;
};

/// Creates a class factory.
/// @param rclsid  LIBID_ZRKey.
/// @param riid    IID_IClassFactory.
/// @param ppv     receives the factory with one reference; untouched on failure.
/// @retval S_OK           done.
/// @retval E_INVALIDARG   ppv is null.
/// @retval E_NOTIMPL      rclsid is another identifier.
/// @retval E_NOINTERFACE  riid is another identifier: providers are created by the factory.
/// @retval E_OUTOFMEMORY  out of memory.
extern "C" ZRKEY_EXPORT HRESULT STDMETHODCALLTYPE ZCLGetClassObject(const GUID& rclsid,
                                                                    const GUID& riid, void** ppv);

#endif
