// Objects of the backend without a parent.
#include <cstdlib>

#include "pkcs11/certificate_pkcs11.h"
#include "pkcs11/container_pkcs11.h"
#include "pkcs11/file_pkcs11.h"
#include "pkcs11/token_pkcs11.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

/// An object without a parent.
template <class Class>
ComRef<Class> makeOrphan() {
    return makeObject<Class>(nullptr);
}

TEST(OrphansTest, TokenOperationsWithoutAProviderFail) {
    const auto token = makeOrphan<KeyObject_pkcs11>();
    EXPECT_EQ(nullptr, token->GetTokenProvider());
    BSTR text = nullptr;
    VARIANT result = {};
    EXPECT_HR(E_FAIL, token->GetLabel(&text));
    EXPECT_HR(E_FAIL, token->GetTotalSize(&result));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->FileExists(Text("1"), &result));
    EXPECT_EQ(nullptr, text);
}

TEST(OrphansTest, CloseKeyTwiceFreesTheApplicationPointerOnce) {
    const auto token = makeOrphan<KeyObject_pkcs11>();
    token->SetApplication(std::malloc(16));
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_HR(S_OK, token->CloseKey());
}

TEST(OrphansTest, GetPubPriKeyHandleWithoutAHandleOrAnIdFails) {
    const auto token = makeOrphan<KeyObject_pkcs11>();
    CK_OBJECT_HANDLE key = 7;
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(nullptr, 0, CKK_RSA, "id"));
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(&key, 0, CKK_RSA, nullptr));
    EXPECT_EQ(7u, key);
}

TEST(OrphansTest, FileOperationsWithoutATokenFail) {
    const auto file = makeOrphan<KeyFile_pkcs11>();
    EXPECT_FALSE(file->CreateFile(Text("1")));
    EXPECT_FALSE(file->OpenFile(Text("1")));
    EXPECT_HR(E_FAIL, file->Flush());
}

TEST(OrphansTest, OpenContainerWithoutATokenFails) {
    const auto container = makeOrphan<KeyContainer_pkcs11>();
    EXPECT_FALSE(container->OpenContainer(Variant::fromNumber(0)));
    EXPECT_EQ(nullptr, container->GetKeyObject());
}

TEST(OrphansTest, CertificateOperationsWithoutAContainerFail) {
    const auto certificate = makeOrphan<KeyCertificate_pkcs11>();
    BSTR id = nullptr;
    VARIANT data = {};
    EXPECT_HR(E_FAIL, certificate->GetCertID(&id));
    EXPECT_HR(E_FAIL, certificate->GetCertData(&data));
    EXPECT_EQ(nullptr, id);
    EXPECT_EQ(VT_EMPTY, data.vt);
}

TEST(OrphansTest, GetPubKeyDataWithAFailingCertificateIdReturnsItsCode) {
    const auto token = makeOrphan<KeyObject_pkcs11>();
    const auto certificate = makeOrphan<KeyCertificate>();  // returns E_NOTIMPL
    VARIANT result = {};
    EXPECT_HR(E_NOTIMPL, token->GetPubKeyData(certificate.get(), &result));
    EXPECT_HR(E_FAIL, token->GetCertData(certificate.get(), &result));
}

}  // namespace
}  // namespace zr::test
