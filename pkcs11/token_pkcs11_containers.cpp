// KeyObject_pkcs11: containers and certificates. A container is a certificate on the token, named
// by its CKA_ID read as text.
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "model/log_scope.h"
#include "pkcs11/container_pkcs11.h"
#include "pkcs11/token_object_walk.h"
#include "pkcs11/token_pkcs11.h"
#include "runtime/zcom_bstr.h"

namespace {

/// Makes an array of the names.
/// @return false, and result untouched, when out of memory.
bool storeNames(const std::vector<std::string>& names, VARIANT* result) {
    SAFEARRAYBOUND bound = {static_cast<ULONG>(names.size()), 0};
    SAFEARRAY* array = SafeArrayCreate(VT_BSTR, 1, &bound);
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(array, &data))) {
        if (array) {
            SafeArrayDestroy(array);
        }
        return false;
    }
    bool isComplete = true;
    BSTR* element = static_cast<BSTR*>(data);
    for (const std::string& name : names) {
        *element = zrapi::ZComBSTR(name.c_str()).Copy();
        isComplete = isComplete && *element;
        ++element;
    }
    SafeArrayUnaccessData(array);
    if (!isComplete) {
        SafeArrayDestroy(array);
        return false;
    }
    result->vt = VT_ARRAY | VT_BSTR;
    result->parray = array;
    return true;
}

}  // namespace

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::CreateContainer(BSTR, void**) {
    const LogScope scope(GetLog(), "CreateContainer");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::DeleteContainer(VARIANT) {
    const LogScope scope(GetLog(), "DeleteContainer");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetContainerCount(VARIANT* result) {
    const LogScope scope(GetLog(), "GetContainerCount");
    if (!result) {
        return E_INVALIDARG;
    }
    ULONG count = 0;
    walkCertificates(m_session, {CKA_CLASS, CKA_CERTIFICATE_TYPE, CKA_ID},
                     [&count](CK_OBJECT_HANDLE, const TokenAttributes&) {
                         ++count;
                         return true;
                     });
    result->vt = VT_UI4;
    result->ulVal = count;
    scope.message("KeyObject_pkcs11::GetContainerCount ....\n");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::EnumContainer(INT, VARIANT* result) {
    const LogScope scope(GetLog(), "EnumContainer");
    if (!result) {
        return E_INVALIDARG;
    }
    try {
        std::vector<std::string> names;
        walkCertificates(m_session, {CKA_CLASS, CKA_CERTIFICATE_TYPE, CKA_ID},
                         [&names](CK_OBJECT_HANDLE, const TokenAttributes& read) {
                             names.emplace_back(read.text(2));
                             return true;
                         });
        // Without certificates the result stays as the caller passed it.
        if (!names.empty() && !storeNames(names, result)) {
            return E_FAIL;
        }
    } catch (const std::bad_alloc&) {
        return E_FAIL;
    }
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::OpenContainer(VARIANT which, void** container) {
    const LogScope scope(GetLog(), "OpenContainer");
    if (!container) {
        return E_INVALIDARG;
    }
    auto* opened = new (std::nothrow) KeyContainer_pkcs11(this);
    if (!opened) {
        return E_OUTOFMEMORY;
    }
    if (!opened->OpenContainer(which)) {
        delete opened;
        return E_FAIL;
    }
    *container = static_cast<IKeyContainer*>(opened);
    opened->AddRef();
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetCertData(IKeyCertificate* certificate,
                                                        VARIANT* result) {
    const LogScope scope(GetLog(), "GetCertData");
    if (!certificate || !result) {
        return E_INVALIDARG;
    }
    // Whatever the certificate reports, a failure is E_FAIL, and End is written for both.
    return scope.end(FAILED(certificate->GetCertData(result)) ? E_FAIL : S_OK);
}
