// KeyContainer_pkcs11: a certificate on the token, with the keys of the same ID.
#pragma once

#include "model/key_container.h"
#include "pkcs11/cryptoki_types.h"
#include "runtime/dispatch_table.h"

class KeyObject_pkcs11;

class KeyContainer_pkcs11 : public zr::WithMethodTable<KeyContainer_pkcs11, KeyContainer> {
public:
    explicit KeyContainer_pkcs11(KeyObject* token);

    HRESULT STDMETHODCALLTYPE Close() override;
    /// The bytes of the certificate's type as text; empty for X.509, whose type is 0.
    HRESULT STDMETHODCALLTYPE GetType(BSTR* type) override;
    HRESULT STDMETHODCALLTYPE ImportCertificate(bool signing, VARIANT certificate) override;
    HRESULT STDMETHODCALLTYPE ExportCertificate(bool signing, VARIANT* certificate) override;
    HRESULT STDMETHODCALLTYPE GenKeyPair(VARIANT* result) override;
    HRESULT STDMETHODCALLTYPE GetKeyCert(bool signing, void** certificate) override;

    /// Finds the certificate of a container.
    /// @param identity  VT_BSTR its name, VT_I4 its position in the walk; other types never match.
    /// @return false when no certificate matches, or the ID of the match has 128 bytes or more.
    bool OpenContainer(const VARIANT& identity);

    const char* GetCertID() const { return m_szCertID; }
    /// The owning token; null when there is none or it is of another kind.
    KeyObject_pkcs11* GetKeyObject() const;

    HRESULT _GetKeyCert(DISPPARAMS* params, VARIANT* result);

private:
    friend class zr::WithMethodTable<KeyContainer_pkcs11, KeyContainer>;

    static DispatchInfo s_listDispatchInfo[];
    static const int s_nDispatchInfoCount;
    static const bool s_bAdaptersStored;

    char m_szCertID[128] = {};
    char m_szCertType[64] = {};
    CK_OBJECT_HANDLE m_hCertObject = 0;
};
