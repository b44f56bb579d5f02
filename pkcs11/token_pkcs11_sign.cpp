// KeyObject_pkcs11: signing and verifying with the keys of a container, digests, and the lists of
// algorithm names.
//
// Whatever algorithm a caller names, signatures are CKM_SHA1_RSA_PKCS and the digest is MD5.
#include <cstdio>
#include <cstring>

#include "model/log_scope.h"
#include "pkcs11/byte_array.h"
#include "pkcs11/certificate_pkcs11.h"
#include "pkcs11/container_pkcs11.h"
#include "pkcs11/text_out.h"
#include "pkcs11/token_object_walk.h"
#include "pkcs11/token_pkcs11.h"
#include "runtime/md5.h"
#include "runtime/zcom_bstr.h"

namespace {

constexpr CK_ULONG kSignatureSize = 1024;

/// The ID by which the keys of a certificate are found. The library's own certificates supply its
/// bytes, which may not be UTF-8; the text of a host's certificate object is converted to UTF-8.
class CertificateId {
public:
    explicit CertificateId(IKeyCertificate* certificate)
        : m_result(certificate ? certificate->GetCertID(&m_reported) : E_INVALIDARG),
          m_owned(m_reported, false) {
        if (FAILED(m_result)) {
            return;
        }
        if (const auto* own = KeyCertificate_pkcs11::FromInterface(certificate)) {
            m_text = own->GetKeyContainer()->GetCertID();
        } else if (m_reported) {
            m_text = m_owned;
        }
        if (!m_text) {
            // Not the empty text instead: that would be the ID of another certificate.
            m_result = E_OUTOFMEMORY;
        }
    }

    /// S_OK when there is an ID; else the failure of GetCertID, E_INVALIDARG or E_OUTOFMEMORY.
    HRESULT result() const { return m_result; }
    const char* text() const { return m_text; }

private:
    BSTR m_reported = nullptr;
    HRESULT m_result;
    zrapi::ZComBSTR m_owned;
    const char* m_text = "";
};

}  // namespace

HRESULT KeyObject_pkcs11::GetPubPriKeyHandle(CK_OBJECT_HANDLE* handle, int publicFlag,
                                             ULONG keyType, const char* id) {
    const LogScope scope(GetLog(), "GetPubPriKeyHandle");
    if (!handle || !id) {
        return E_FAIL;
    }
    CK_OBJECT_CLASS objectClass = publicFlag ? CKO_PUBLIC_KEY : CKO_PRIVATE_KEY;
    CK_BBOOL isOnToken = CK_TRUE;
    CK_KEY_TYPE type = keyType;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken},
                             {CKA_KEY_TYPE, &type, sizeof type}};
    bool isFound = false;
    {
        TokenObjectWalk walk(m_session, search, 3);
        // A certificate walk may go on with a search that was already open; a key search must not.
        if (walk.hasBegun()) {
            walk.forEach({CKA_CLASS, CKA_ID},
                         [&](CK_OBJECT_HANDLE object, const TokenAttributes& read) {
                             isFound = std::strcmp(read.text(1), id) == 0;
                             if (isFound) {
                                 *handle = object;
                             }
                             return !isFound;
                         });
        }
    }
    return scope.end(isFound ? S_OK : E_FAIL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::SignData(BSTR, VARIANT data,
                                                     IKeyCertificate* certificate,
                                                     VARIANT* result) {
    const LogScope scope(GetLog(), "SignData");
    const auto fail = [&scope](const char* text, HRESULT hr, unsigned int line = __builtin_LINE()) {
        scope.message(text, line);
        return hr;
    };
    scope.message("KeyObject_pkcs11::SignData..................\n");
    if (!zr::isByteArray(data) || !result) {
        return fail("Error: parameter error \n", E_INVALIDARG);
    }
    if (!m_bLogin) {
        // Hosts ask for the PIN when they see this code, so it is not E_ACCESSDENIED.
        return fail("Error: m_bLogin is FALSE \n", RPC_E_CANTCALLOUT_INEXTERNALCALL);
    }
    const CertificateId id(certificate);
    if (FAILED(id.result())) {
        return fail("Error: GetCertID fail\n", id.result());
    }
    CK_OBJECT_HANDLE key = 0;
    if (FAILED(GetPubPriKeyHandle(&key, 0, CKK_RSA, id.text()))) {
        return fail("Error: GetPubPriKeyHandle fail\n", E_FAIL);
    }
    const zr::AccessedBytes input(data);
    if (!input.isAccessed()) {
        return fail("Error: Sign Fail\n", E_FAIL);
    }
    CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, nullptr, 0};
    if (m_session.Call(&CK_FUNCTIONS::C_SignInit, m_session.handle(), &mechanism, key) != CKR_OK) {
        return fail("Error: SignInit Fail\n", E_FAIL);
    }
    CK_BYTE signature[kSignatureSize] = {};
    CK_ULONG length = sizeof signature;
    if (m_session.Call(&CK_FUNCTIONS::C_Sign, m_session.handle(), input.data(),
                       CK_ULONG{input.length()}, signature, &length) != CKR_OK ||
        length > sizeof signature) {
        return fail("Error: Sign Fail\n", E_FAIL);
    }
    // Kept for hosts: the elements are VT_I1, the variant says VT_UI1.
    if (!zr::storeBytes(signature, length, VT_I1, result)) {
        return fail("Error: ZSafeArrayAccessData Fail\n", E_FAIL);
    }
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::VerifyData(VARIANT data, IKeyCertificate* certificate,
                                                       BSTR, VARIANT signature) {
    const LogScope scope(GetLog(), "VerifyData");
    const auto fail = [&scope](const char* text, HRESULT hr, unsigned int line = __builtin_LINE()) {
        scope.message(text, line);
        return hr;
    };
    if (!zr::isByteArray(data) || !zr::isByteArray(signature)) {
        return fail("Error: KeyObject_pkcs11::VerifyData ... parament error\n", E_INVALIDARG);
    }
    if (!m_bLogin) {
        return fail("Error: KeyObject_pkcs11::VerifyData m_bLogin is false\n",
                    RPC_E_CANTCALLOUT_INEXTERNALCALL);
    }
    const CertificateId id(certificate);
    if (FAILED(id.result())) {
        return fail("Error: Get cert id fail\n", id.result());
    }
    bool isVerified = false;
    {
        const zr::AccessedBytes input(data);
        const zr::AccessedBytes signatureInput(signature);
        CK_OBJECT_HANDLE key = 0;
        CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, nullptr, 0};
        isVerified = input.isAccessed() && signatureInput.isAccessed() &&
                     SUCCEEDED(GetPubPriKeyHandle(&key, 1, CKK_RSA, id.text())) &&
                     m_session.Call(&CK_FUNCTIONS::C_VerifyInit, m_session.handle(), &mechanism,
                                    key) == CKR_OK &&
                     m_session.Call(&CK_FUNCTIONS::C_Verify, m_session.handle(), input.data(),
                                    CK_ULONG{input.length()}, signatureInput.data(),
                                    CK_ULONG{signatureInput.length()}) == CKR_OK;
    }
    return scope.end(isVerified ? S_OK : E_FAIL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::VerifyDataByCert(VARIANT, IKeyCertificate*, VARIANT,
                                                             BSTR, VARIANT) {
    // Nothing is verified. Hosts rely on S_OK.
    const LogScope scope(GetLog(), "VerifyDataByCert");
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::VerifyDataByPubKey(VARIANT, IKeyCertificate*, VARIANT,
                                                               BSTR, VARIANT) {
    const LogScope scope(GetLog(), "VerifyDataByPubKey");
    return scope.end(E_FAIL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::DigestData(BSTR method, VARIANT data, VARIANT* result) {
    const LogScope scope(GetLog(), "DigestData");
    if (!zr::isByteArray(data) || !result) {
        return E_INVALIDARG;
    }
    zrapi::ZComBSTR wideMethod(method);
    const char* name = wideMethod;
    if (!name || std::strcmp(name, "MD5") != 0) {
        return E_INVALIDARG;
    }
    unsigned char digest[16] = {};
    {
        const zr::AccessedBytes input(data);
        if (!input.isAccessed()) {
            return E_FAIL;
        }
        MD5Data(input.data(), input.length(), digest);
    }
    if (!zr::storeBytes(digest, sizeof digest, VT_UI1, result)) {
        return E_FAIL;
    }
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetDigestMethod(BSTR* out) {
    const LogScope scope(GetLog(), "GetDigestMethod");
    return scope.endOnSuccess(out ? zr::handOutText("MD5", out) : E_INVALIDARG);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetSignAlgo(BSTR* out) {
    const LogScope scope(GetLog(), "GetSignAlgo");
    return scope.endOnSuccess(out ? zr::handOutText(m_szAlgoList, out) : E_INVALIDARG);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetAlgoList(BSTR* out) {
    const LogScope scope(GetLog(), "GetAlgoList");
    return scope.endOnSuccess(out ? zr::handOutText(m_szAlgoList, out) : E_INVALIDARG);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::GetPubKeyData(IKeyCertificate* certificate,
                                                          VARIANT* result) {
    const LogScope scope(GetLog(), "GetPubKeyData");
    if (!certificate || !result) {
        scope.message("Error: pKeyCert == NULL || pvarResult == NULL\n");
        return E_INVALIDARG;
    }
    const CertificateId id(certificate);
    if (FAILED(id.result())) {
        scope.message("Error: GetCertID fail\n");
        return id.result();
    }
    TokenAttributes read({CKA_CLASS, CKA_KEY_TYPE, CKA_ID});
    if (!FindPubKeyData(id.text(), &read, scope)) {
        scope.message("Error: pbtPubKeyData == NULL\n");
        return E_FAIL;
    }
    // Hosts get the key's CKA_ID, not its value.
    if (!zr::storeBytes(read.bytes(2), read.length(2), VT_UI1, result)) {
        scope.message("Error: ZSafeArrayAccessData fail\n");
        return E_FAIL;
    }
    return scope.end(S_OK);
}

/// Finds the first public key whose CKA_KEY_TYPE, read as text, equals the certificate's ID. The
/// type of an RSA key reads as the empty text, so only an empty ID matches.
bool KeyObject_pkcs11::FindPubKeyData(const char* id, TokenAttributes* read,
                                      const LogScope& scope) const {
    CK_OBJECT_CLASS objectClass = CKO_PUBLIC_KEY;
    CK_BBOOL isOnToken = CK_TRUE;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken}};
    TokenObjectWalk walk(m_session, search, 2);
    for (;;) {
        CK_OBJECT_HANDLE object = 0;
        const TokenObjectWalk::Step step = walk.next(&object);
        if (step != TokenObjectWalk::Step::kObject) {
            scope.message(step == TokenObjectWalk::Step::kFailed ? "Error: C_FindObjects fail\n"
                                                                 : "Error: ulRetCount != 1\n");
            return false;
        }
        if (const CK_RV rv = read->readLengths(m_session, object); rv != CKR_OK) {
            char line[1024];
            std::snprintf(line, sizeof line, "Error: C_GetAttributeValue fail 1 ckrv=[0x%x]\n",
                          static_cast<unsigned int>(rv));
            scope.message(line);
            return false;
        }
        scope.message("C_GetAttributeValue 1 success\n");
        if (read->readValues(m_session, object) != CKR_OK) {
            scope.message("Error: C_GetAttributeValue fail 2\n");
            return false;
        }
        if (std::strcmp(read->text(1), id) == 0) {
            return true;
        }
    }
}
