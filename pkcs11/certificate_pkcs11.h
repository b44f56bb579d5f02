// KeyCertificate_pkcs11: the certificate of a container, read from the token each time.
#pragma once

#include "model/key_certificate.h"

class KeyContainer_pkcs11;

class KeyCertificate_pkcs11 final : public KeyCertificate {
public:
    explicit KeyCertificate_pkcs11(KeyContainer* container);

    /// The library's own object behind an interface pointer.
    /// @return null for a certificate object of the host's making.
    static const KeyCertificate_pkcs11* FromInterface(const IKeyCertificate* certificate);

    /// @param data  receives the certificate's DER bytes as stored.
    HRESULT STDMETHODCALLTYPE GetCertData(VARIANT* data) override;
    /// @param id  receives the container's name.
    HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) override;

    /// The owning container; null when there is none or it is of another kind.
    KeyContainer_pkcs11* GetKeyContainer() const;
};
