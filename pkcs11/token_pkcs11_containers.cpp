// KeyObject_pkcs11: containers and certificates. A container is a certificate on the token, named
// by its CKA_ID read as text.
#include <algorithm>
#include <deque>
#include <new>

#include "model/log_scope.h"
#include "pkcs11/container_pkcs11.h"
#include "pkcs11/token_object_walk.h"
#include "pkcs11/token_pkcs11.h"
#include "runtime/string_convert.h"

namespace {

/// The names of a walk, as strings that can be handed out. A deque: a vector that grows has its old
/// and its new block at once.
class NameList {
public:
    NameList() = default;
    NameList(const NameList&) = delete;
    NameList& operator=(const NameList&) = delete;
    ~NameList() {
        for (const BSTR name : m_names) {
            SysFreeString(name);
        }
    }

    /// @param name  UTF-8.
    void add(const char* name) {
        m_names.push_back(nullptr);
        m_names.back() = ZSysAllocUTF8String(name);
    }
    bool isEmpty() const { return m_names.empty(); }

    /// Hands the names out in an array.
    /// @return false, and result untouched, when out of memory.
    bool moveTo(VARIANT* result) {
        SAFEARRAYBOUND bound = {static_cast<ULONG>(m_names.size()), 0};
        SAFEARRAY* array = isComplete() ? SafeArrayCreate(VT_BSTR, 1, &bound) : nullptr;
        void* data = nullptr;
        if (FAILED(SafeArrayAccessData(array, &data))) {
            SafeArrayDestroy(array);
            return false;
        }
        std::copy(m_names.begin(), m_names.end(), static_cast<BSTR*>(data));
        m_names.clear();
        SafeArrayUnaccessData(array);
        result->vt = VT_ARRAY | VT_BSTR;
        result->parray = array;
        return true;
    }

private:
    /// Whether every name could be converted.
    bool isComplete() const {
        return std::find(m_names.begin(), m_names.end(), nullptr) == m_names.end();
    }

    std::deque<BSTR> m_names;
};

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
        NameList names;
        walkCertificates(m_session, {CKA_CLASS, CKA_CERTIFICATE_TYPE, CKA_ID},
                         [&names](CK_OBJECT_HANDLE, const TokenAttributes& read) {
                             names.add(read.text(2));
                             return true;
                         });
        // Without certificates the result stays as the caller passed it.
        if (!names.isEmpty() && !names.moveTo(result)) {
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
