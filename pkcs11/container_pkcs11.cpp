// KeyContainer_pkcs11: opening a container and its certificate.
#include "pkcs11/container_pkcs11.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "model/cast_parent.h"
#include "pkcs11/certificate_pkcs11.h"
#include "pkcs11/text_out.h"
#include "pkcs11/token_object_walk.h"
#include "pkcs11/token_pkcs11.h"
#include "runtime/bounded_text.h"
#include "runtime/zcom_bstr.h"

KeyContainer_pkcs11::KeyContainer_pkcs11(KeyObject* token) : WithMethodTable(token) {}

KeyObject_pkcs11* KeyContainer_pkcs11::GetKeyObject() const {
    return zr::castParent<KeyObject_pkcs11>(GetParent());
}

bool KeyContainer_pkcs11::OpenContainer(const VARIANT& identity) {
    const KeyObject_pkcs11* token = GetKeyObject();
    if (!token) {
        return false;
    }
    BSTR source = identity.vt == VT_BSTR ? identity.bstrVal : nullptr;
    zrapi::ZComBSTR wideName(source);
    const char* name = wideName;
    LONG index = 0;
    bool isOpened = false;
    walkCertificates(
        token->GetSession(), {CKA_CLASS, CKA_CERTIFICATE_TYPE, CKA_ID},
        [&](CK_OBJECT_HANDLE object, const TokenAttributes& read) {
            const char* id = read.text(2);
            const bool isMatch =
                identity.vt == VT_I4 ? identity.lVal == index : name && std::strcmp(name, id) == 0;
            if (!isMatch) {
                ++index;
                return true;
            }
            // A cut ID could be that of another certificate, so a longer one is refused.
            if (zr::appendText(m_szCertID, id)) {
                m_hCertObject = object;
                std::memcpy(m_szCertType, read.bytes(1),
                            std::min<std::size_t>(read.length(1), sizeof m_szCertType - 1));
                isOpened = true;
            }
            return false;
        });
    return isOpened;
}

HRESULT STDMETHODCALLTYPE KeyContainer_pkcs11::Close() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE KeyContainer_pkcs11::GetType(BSTR* type) {
    if (!type) {
        return E_INVALIDARG;
    }
    return zr::handOutText(m_szCertType, type);
}

HRESULT STDMETHODCALLTYPE KeyContainer_pkcs11::ImportCertificate(bool, VARIANT) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer_pkcs11::ExportCertificate(bool, VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer_pkcs11::GenKeyPair(VARIANT*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE KeyContainer_pkcs11::GetKeyCert(bool, void** certificate) {
    // A container has one certificate, whatever the flag says.
    if (!certificate) {
        return E_INVALIDARG;
    }
    auto* made = new (std::nothrow) KeyCertificate_pkcs11(this);
    if (!made) {
        return E_OUTOFMEMORY;
    }
    *certificate = static_cast<IKeyCertificate*>(made);
    made->AddRef();
    return S_OK;
}
