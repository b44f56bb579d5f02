/// @file
/// The public interface of the library for C99 and later: the objects of zrkey.h as structures of
/// function pointers. zrkey.h is the reference: every function here has the arguments, results and
/// oddities of the operation of the same name there.
///
///     IClassFactory* factory = NULL;
///     ITokenProvider* provider = NULL;
///     ZCLGetClassObject(&LIBID_ZRKey, &IID_IClassFactory, (void**)&factory);
///     factory->lpVtbl->CreateInstance(factory, NULL, &IID_ITokenProvider, (void**)&provider);
///     factory->lpVtbl->Release(factory);
///     provider->lpVtbl->Load(provider, path);
///
/// An object is called through lpVtbl and is the first argument of each of its functions. Where C++
/// has a reference to an identifier, C has a pointer. An object is an IDispatch too:
/// (IDispatch*)provider.
///
/// Who owns what:
///   - An object that a function hands out comes with one reference: end it with Release. A parent
///     may be released before its children.
///   - A text that a function hands out is freed with SysFreeString, a variant with VariantClear.
///   - Arguments are borrowed for the call: the caller frees them afterwards.
///   - Set what receives a result to NULL, or with VariantInit to VT_EMPTY, before the call: some
///     functions return S_OK and leave it untouched.
///
/// In C++ this header is zrkey.h, whose classes are the same objects: a header of a host that C and
/// C++ share may include it. Link as for zrkey.h. One thread at a time uses an object.
#ifndef ZRKEY_ZRKEY_C_H
#define ZRKEY_ZRKEY_C_H

#ifdef __cplusplus
#include <zrkey/zrkey.h>
#else

#include <stdbool.h>
#include <zrkey/automation.h>
#include <zrkey/identifiers.h>

// clang-format off
/// The seven operations that every object has.
#define ZRKEY_DISPATCH_SLOTS(Self)                                                                 \
    /** S_OK for IID_ISupportErrorInfo only, else E_NOTIMPL. */                                    \
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(Self* This, REFIID riid, void** ppv);               \
    /** Adds a reference. */                                                                       \
    ULONG(STDMETHODCALLTYPE* AddRef)(Self* This);                                                  \
    /** Ends a reference. */                                                                       \
    ULONG(STDMETHODCALLTYPE* Release)(Self* This);                                                 \
    /** Not implemented. */                                                                        \
    HRESULT(STDMETHODCALLTYPE* GetTypeInfoCount)(Self* This, UINT* count);                         \
    /** Not implemented. */                                                                        \
    HRESULT(STDMETHODCALLTYPE* GetTypeInfo)(Self* This, UINT index, LCID lcid, ITypeInfo** info);  \
    /** Finds a member by name: the first of names. */                                             \
    HRESULT(STDMETHODCALLTYPE* GetIDsOfNames)(Self* This, REFIID riid, LPOLESTR* names,            \
                                              UINT count, LCID lcid, DISPID* ids);                 \
    /** Calls a member; rgvarg[0] is the first argument. */                                        \
    HRESULT(STDMETHODCALLTYPE* Invoke)(Self* This, DISPID id, REFIID riid, LCID lcid, WORD flags,  \
                                       DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,      \
                                       UINT* argErr)

/// @cond  The reference shows the objects of zrkey.h and, of this header, their tables.
typedef struct ITokenProvider ITokenProvider;
typedef struct IKeyObject IKeyObject;
typedef struct IKeyFile IKeyFile;
typedef struct IKeyContainer IKeyContainer;
typedef struct IKeyCertificate IKeyCertificate;
/// @endcond

/// The operations of ITokenProvider, the loader of modules.
typedef struct ITokenProviderVtbl {
    ZRKEY_DISPATCH_SLOTS(ITokenProvider);
    /// Loads a module, initialises it and reads "config.xml" in the current directory.
    HRESULT(STDMETHODCALLTYPE* Load)(ITokenProvider* This, BSTR path);
    /// Finalises and frees the module, for the whole process.
    HRESULT(STDMETHODCALLTYPE* Unload)(ITokenProvider* This);
    /// Opens a token: receives an IKeyObject*, also with S_OK sometimes none.
    HRESULT(STDMETHODCALLTYPE* OpenKey)(ITokenProvider* This, LONG index, void** key);
    /// Receives the name "PKCS#11".
    HRESULT(STDMETHODCALLTYPE* GetName)(ITokenProvider* This, BSTR* name);
    /// Counts the slots that hold a token.
    HRESULT(STDMETHODCALLTYPE* GetKeyCount)(ITokenProvider* This, INT* count);
    /// Does nothing.
    HRESULT(STDMETHODCALLTYPE* GetKeySN)(ITokenProvider* This, LONG index, BSTR* serial);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* LoadFinish)(ITokenProvider* This, INT* done);
} ITokenProviderVtbl;

/// The operations of IKeyObject, a token with its session.
typedef struct IKeyObjectVtbl {
    ZRKEY_DISPATCH_SLOTS(IKeyObject);
    /// Reads the serial number.
    HRESULT(STDMETHODCALLTYPE* GetSerialNumber)(IKeyObject* This, BSTR* out);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* SetLabel)(IKeyObject* This, BSTR* label, VARIANT* result);
    /// Reads the label.
    HRESULT(STDMETHODCALLTYPE* GetLabel)(IKeyObject* This, BSTR* out);
    /// Reads the name of the manufacturer.
    HRESULT(STDMETHODCALLTYPE* GetManufacturerID)(IKeyObject* This, BSTR* out);
    /// Reads the name of the model.
    HRESULT(STDMETHODCALLTYPE* GetModelID)(IKeyObject* This, BSTR* out);
    /// Reads the size of the public memory.
    HRESULT(STDMETHODCALLTYPE* GetTotalSize)(IKeyObject* This, VARIANT* result);
    /// Reads how much of the public memory is free.
    HRESULT(STDMETHODCALLTYPE* GetFreeSize)(IKeyObject* This, VARIANT* result);
    /// Changes a PIN; type 0 is the user, 1 the security officer.
    HRESULT(STDMETHODCALLTYPE* ModifyPIN)(IKeyObject* This, BSTR oldPin, BSTR newPin, INT type);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* GetMaxRetryCount)(IKeyObject* This, INT type, VARIANT* result);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* GetRemainRetryCount)(IKeyObject* This, INT type, VARIANT* result);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* IsDefaultPIN)(IKeyObject* This, INT type, VARIANT* result);
    /// Logs in; type 0 is the user, 1 the security officer.
    HRESULT(STDMETHODCALLTYPE* VerifyPIN)(IKeyObject* This, BSTR pin, INT type);
    /// Does nothing.
    HRESULT(STDMETHODCALLTYPE* UnlockPIN)(IKeyObject* This, BSTR soPin, BSTR newPin);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* Lock)(IKeyObject* This, VARIANT* result);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* Unlock)(IKeyObject* This, VARIANT* result);
    /// Creates an empty data file: receives an IKeyFile*.
    HRESULT(STDMETHODCALLTYPE* CreateFile)(IKeyObject* This, BSTR name, INT reserved1,
                                           INT reserved2, INT reserved3, ULONG reserved4,
                                           void** file);
    /// Looks for a data file: receives 1 or 0. S_OK leaves a search open: see zrkey.h.
    HRESULT(STDMETHODCALLTYPE* FileExists)(IKeyObject* This, BSTR name, VARIANT* result);
    /// Opens a data file: receives an IKeyFile*.
    HRESULT(STDMETHODCALLTYPE* OpenFile)(IKeyObject* This, BSTR name, void** file);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* EnumFiles)(IKeyObject* This, VARIANT* result);
    /// Destroys a data file.
    HRESULT(STDMETHODCALLTYPE* DeleteFile)(IKeyObject* This, BSTR name);
    /// Receives "MD5".
    HRESULT(STDMETHODCALLTYPE* GetDigestMethod)(IKeyObject* This, BSTR* out);
    /// Computes an MD5 digest.
    HRESULT(STDMETHODCALLTYPE* DigestData)(IKeyObject* This, BSTR method, VARIANT data,
                                           VARIANT* result);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* CreateContainer)(IKeyObject* This, BSTR name, void** container);
    /// Counts the containers.
    HRESULT(STDMETHODCALLTYPE* GetContainerCount)(IKeyObject* This, VARIANT* result);
    /// Opens a container by name or index: receives an IKeyContainer*.
    HRESULT(STDMETHODCALLTYPE* OpenContainer)(IKeyObject* This, VARIANT which, void** container);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* DeleteContainer)(IKeyObject* This, VARIANT which);
    /// Lists the names of the containers. Without a container the result is untouched.
    HRESULT(STDMETHODCALLTYPE* EnumContainer)(IKeyObject* This, INT reserved, VARIANT* result);
    /// Reads a certificate.
    HRESULT(STDMETHODCALLTYPE* GetCertData)(IKeyObject* This, IKeyCertificate* certificate,
                                            VARIANT* result);
    /// Reads the CKA_ID of a public key.
    HRESULT(STDMETHODCALLTYPE* GetPubKeyData)(IKeyObject* This, IKeyCertificate* certificate,
                                              VARIANT* result);
    /// Signs data with the key of a certificate.
    HRESULT(STDMETHODCALLTYPE* SignData)(IKeyObject* This, BSTR algorithm, VARIANT data,
                                         IKeyCertificate* certificate, VARIANT* result);
    /// Verifies a signature: S_OK when it is valid.
    HRESULT(STDMETHODCALLTYPE* VerifyData)(IKeyObject* This, VARIANT data,
                                           IKeyCertificate* certificate, BSTR algorithm,
                                           VARIANT signature);
    /// Does nothing. S_OK does not mean that the signature is valid.
    HRESULT(STDMETHODCALLTYPE* VerifyDataByCert)(IKeyObject* This, VARIANT data,
                                                 IKeyCertificate* certificate,
                                                 VARIANT certificateData, BSTR algorithm,
                                                 VARIANT signature);
    /// Does nothing and fails.
    HRESULT(STDMETHODCALLTYPE* VerifyDataByPubKey)(IKeyObject* This, VARIANT data,
                                                   IKeyCertificate* certificate, VARIANT publicKey,
                                                   BSTR algorithm, VARIANT signature);
    /// Receives the algorithm list of the configuration.
    HRESULT(STDMETHODCALLTYPE* GetSignAlgo)(IKeyObject* This, BSTR* out);
    /// Does nothing.
    HRESULT(STDMETHODCALLTYPE* GetKeyObjectClassName)(IKeyObject* This, BSTR* out);
    /// Does nothing.
    HRESULT(STDMETHODCALLTYPE* GetCaLibPath)(IKeyObject* This, BSTR* out);
    /// Does nothing.
    HRESULT(STDMETHODCALLTYPE* GetCSPName)(IKeyObject* This, BSTR* out);
    /// Receives the algorithm list of the configuration.
    HRESULT(STDMETHODCALLTYPE* GetAlgoList)(IKeyObject* This, BSTR* out);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* GetZRHardApiInfo)(IKeyObject* This, void** api, BSTR* info);
} IKeyObjectVtbl;

/// The operations of IKeyFile, a data file.
typedef struct IKeyFileVtbl {
    ZRKEY_DISPATCH_SLOTS(IKeyFile);
    /// Frees the contents without writing them back.
    HRESULT(STDMETHODCALLTYPE* Close)(IKeyFile* This);
    /// Replaces the value of the token's object by the contents.
    HRESULT(STDMETHODCALLTYPE* Flush)(IKeyFile* This);
    /// Does nothing and fails.
    HRESULT(STDMETHODCALLTYPE* Write)(IKeyFile* This, VARIANT data);
    /// Reads bytes at the position.
    HRESULT(STDMETHODCALLTYPE* Read)(IKeyFile* This, ULONG length, VARIANT* data);
    /// Receives the size in bytes.
    HRESULT(STDMETHODCALLTYPE* GetSize)(IKeyFile* This, VARIANT* size);
    /// Moves the position; origin 0 is the beginning, 1 the position, 2 the end.
    HRESULT(STDMETHODCALLTYPE* Seek)(IKeyFile* This, LONG offset, INT origin);
} IKeyFileVtbl;

/// The operations of IKeyContainer, a container.
typedef struct IKeyContainerVtbl {
    ZRKEY_DISPATCH_SLOTS(IKeyContainer);
    /// Does nothing.
    HRESULT(STDMETHODCALLTYPE* Close)(IKeyContainer* This);
    /// Receives the certificate's type, read as text.
    HRESULT(STDMETHODCALLTYPE* GetType)(IKeyContainer* This, BSTR* type);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* ImportCertificate)(IKeyContainer* This, bool signing,
                                                  VARIANT certificate);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* ExportCertificate)(IKeyContainer* This, bool signing,
                                                  VARIANT* certificate);
    /// Not implemented.
    HRESULT(STDMETHODCALLTYPE* GenKeyPair)(IKeyContainer* This, VARIANT* result);
    /// Receives the container's IKeyCertificate*.
    HRESULT(STDMETHODCALLTYPE* GetKeyCert)(IKeyContainer* This, bool signing, void** certificate);
} IKeyContainerVtbl;

/// The operations of IKeyCertificate, a certificate.
typedef struct IKeyCertificateVtbl {
    ZRKEY_DISPATCH_SLOTS(IKeyCertificate);
    /// Reads the certificate (DER).
    HRESULT(STDMETHODCALLTYPE* GetCertData)(IKeyCertificate* This, VARIANT* data);
    /// Receives the name of the container.
    HRESULT(STDMETHODCALLTYPE* GetCertID)(IKeyCertificate* This, BSTR* id);
} IKeyCertificateVtbl;
// clang-format on

/// @cond
struct ITokenProvider {
    const ITokenProviderVtbl* lpVtbl;
};
struct IKeyObject {
    const IKeyObjectVtbl* lpVtbl;
};
struct IKeyFile {
    const IKeyFileVtbl* lpVtbl;
};
struct IKeyContainer {
    const IKeyContainerVtbl* lpVtbl;
};
struct IKeyCertificate {
    const IKeyCertificateVtbl* lpVtbl;
};
/// @endcond

/// Creates a class factory.
/// @param rclsid  &LIBID_ZRKey.
/// @param riid    &IID_IClassFactory.
/// @param ppv     receives an IClassFactory* with one reference; untouched on failure.
/// @return S_OK, or a failure: see zrkey.h.
ZRKEY_EXPORT HRESULT STDMETHODCALLTYPE ZCLGetClassObject(const GUID* rclsid, const GUID* riid,
                                                         void** ppv);

#endif
#endif
