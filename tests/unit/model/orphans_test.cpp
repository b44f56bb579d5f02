// Objects of the backend without the parent that they work through.
#include <cstdlib>

#include "pkcs11/key_certificate.h"
#include "pkcs11/key_container.h"
#include "pkcs11/key_file.h"
#include "pkcs11/key_object.h"
#include "tests/contract/token.h"

namespace zr::test {
namespace {

template <class Class>
class Orphan {
public:
    Orphan() { m_object->AddRef(); }
    Orphan(const Orphan&) = delete;
    Orphan& operator=(const Orphan&) = delete;
    ~Orphan() { m_object->Release(); }
    Class* operator->() const { return m_object; }
    Class* get() const { return m_object; }

private:
    Class* m_object = new Class(nullptr);
};

TEST(OrphansTest, ATokenWithoutAProviderFails) {
    const Orphan<KeyObject_pkcs11> token;
    EXPECT_EQ(nullptr, token->GetTokenProvider());
    BSTR text = nullptr;
    VARIANT result = {};
    EXPECT_HR(E_FAIL, token->GetLabel(&text));
    EXPECT_HR(E_FAIL, token->GetTotalSize(&result));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->FileExists(Text("1"), &result));
    EXPECT_EQ(nullptr, text);
}

TEST(OrphansTest, AnApplicationPointerIsFreedOnce) {
    const Orphan<KeyObject_pkcs11> token;
    token->SetApplication(std::malloc(16));
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_HR(S_OK, token->CloseKey());
}

TEST(OrphansTest, AKeyIsNotLookedForWithoutAPlaceOrAnId) {
    const Orphan<KeyObject_pkcs11> token;
    CK_OBJECT_HANDLE key = 7;
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(nullptr, 0, CKK_RSA, "id"));
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(&key, 0, CKK_RSA, nullptr));
    EXPECT_EQ(7u, key);
}

TEST(OrphansTest, AFileWithoutATokenFails) {
    const Orphan<KeyFile_pkcs11> file;
    EXPECT_FALSE(file->CreateFile(Text("1")));
    EXPECT_FALSE(file->OpenFile(Text("1")));
    EXPECT_HR(E_FAIL, file->Flush());
}

TEST(OrphansTest, AContainerWithoutATokenIsNotOpened) {
    const Orphan<KeyContainer_pkcs11> container;
    VARIANT first = {};
    first.vt = VT_I4;
    EXPECT_FALSE(container->OpenContainer(first));
    EXPECT_EQ(nullptr, container->GetKeyObject());
}

TEST(OrphansTest, ACertificateWithoutAContainerFails) {
    const Orphan<KeyCertificate_pkcs11> certificate;
    BSTR id = nullptr;
    VARIANT data = {};
    EXPECT_HR(E_FAIL, certificate->GetCertID(&id));
    EXPECT_HR(E_FAIL, certificate->GetCertData(&data));
    EXPECT_EQ(nullptr, id);
    EXPECT_EQ(VT_EMPTY, data.vt);
}

TEST(OrphansTest, TheFailureOfACertificatesIdIsPassedOn) {
    const Orphan<KeyObject_pkcs11> token;
    const Orphan<KeyCertificate> certificate;  // answers E_NOTIMPL
    VARIANT result = {};
    EXPECT_HR(E_NOTIMPL, token->GetPubKeyData(certificate.get(), &result));
    EXPECT_HR(E_FAIL, token->GetCertData(certificate.get(), &result));
}

}  // namespace
}  // namespace zr::test
