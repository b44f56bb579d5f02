// KeyCertificate_pkcs11: the certificate of a container.
#include "pkcs11/certificate_pkcs11.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "model/cast_parent.h"
#include "pkcs11/byte_array.h"
#include "pkcs11/container_pkcs11.h"
#include "pkcs11/text_out.h"
#include "pkcs11/token_object_walk.h"
#include "pkcs11/token_pkcs11.h"

namespace {

/// By the binary contract an object begins with the address of its method table. Reads no more than
/// that: a host's object may be written in C, without RTTI and without a base class.
const void* methodTable(const IKeyCertificate* certificate) {
    const void* table;
    std::memcpy(&table, static_cast<const void*>(certificate), sizeof table);
    return table;
}

std::atomic<const void*> s_ownMethodTable{nullptr};

}  // namespace

KeyCertificate_pkcs11::KeyCertificate_pkcs11(KeyContainer* container) : KeyCertificate(container) {
    s_ownMethodTable.store(methodTable(this), std::memory_order_relaxed);
}

const KeyCertificate_pkcs11* KeyCertificate_pkcs11::FromInterface(
    const IKeyCertificate* certificate) {
    return methodTable(certificate) == s_ownMethodTable.load(std::memory_order_relaxed)
               ? static_cast<const KeyCertificate_pkcs11*>(certificate)
               : nullptr;
}

KeyContainer_pkcs11* KeyCertificate_pkcs11::GetKeyContainer() const {
    return zr::castParent<KeyContainer_pkcs11>(GetParent());
}

HRESULT STDMETHODCALLTYPE KeyCertificate_pkcs11::GetCertData(VARIANT* data) {
    if (!data) {
        return E_INVALIDARG;
    }
    const KeyContainer_pkcs11* container = GetKeyContainer();
    const KeyObject_pkcs11* token = container ? container->GetKeyObject() : nullptr;
    if (!token) {
        return E_FAIL;
    }
    // Looks the certificate up by its ID; of several with the same ID the first is read.
    std::unique_ptr<unsigned char, decltype(&std::free)> value(nullptr, std::free);
    CK_ULONG length = 0;
    walkCertificates(token->GetSession(), {CKA_CLASS, CKA_CERTIFICATE_TYPE, CKA_ID, CKA_VALUE},
                     [&](CK_OBJECT_HANDLE, TokenAttributes& read) {
                         if (std::strcmp(read.text(2), container->GetCertID()) != 0) {
                             return true;
                         }
                         length = read.length(3);
                         value.reset(read.release(3));
                         return false;
                     });
    if (!value || !zr::storeBytes(value.get(), length, VT_UI1, data)) {
        return E_FAIL;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE KeyCertificate_pkcs11::GetCertID(BSTR* id) {
    if (!id) {
        return E_INVALIDARG;
    }
    const KeyContainer_pkcs11* container = GetKeyContainer();
    if (!container) {
        return E_FAIL;
    }
    return zr::handOutText(container->GetCertID(), id);
}
