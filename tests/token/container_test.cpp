// Containers and certificates on a real token.
#include "tests/token/soft_token.h"

namespace zr::test {
namespace {

VARIANT integer(LONG value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

HRESULT open(IKeyObject* token, const VARIANT& which, IKeyContainer** container) {
    return token->OpenContainer(which, reinterpret_cast<void**>(container));
}

TEST_F(SoftTokenTest, TheCertificateIsTheOneContainer) {
    VARIANT count;
    VariantInit(&count);
    EXPECT_HR(S_OK, token->GetContainerCount(&count));
    EXPECT_EQ(VT_UI4, count.vt);
    EXPECT_EQ(1u, count.ulVal);
}

TEST_F(SoftTokenTest, TheContainerIsListedByItsId) {
    VARIANT names;
    VariantInit(&names);
    EXPECT_HR(S_OK, token->EnumContainer(0, &names));
    ASSERT_EQ(VT_ARRAY | VT_BSTR, names.vt);
    ASSERT_EQ(1u, names.parray->rgsabound[0].cElements);
    void* data = nullptr;
    ASSERT_HR(S_OK, SafeArrayAccessData(names.parray, &data));
    EXPECT_EQ("container1", narrow(*static_cast<BSTR*>(data)));
    SafeArrayUnaccessData(names.parray);
    VariantClear(&names);
}

TEST_F(SoftTokenTest, TheContainerOpensByNameAndByIndexOnly) {
    const Text name("container1");
    const Text otherName("container2");
    for (const VARIANT& which : {string(name), integer(0)}) {
        IKeyContainer* container = nullptr;
        ASSERT_HR(S_OK, open(token, which, &container));
        BSTR type = nullptr;
        EXPECT_HR(S_OK, container->GetType(&type));
        EXPECT_EQ("", take(type));
        EXPECT_EQ(0u, container->Release());
    }
    for (const VARIANT& which : {string(otherName), integer(1), integer(-1), number(0)}) {
        IKeyContainer* container = nullptr;
        EXPECT_HR(E_FAIL, open(token, which, &container));
        EXPECT_EQ(nullptr, container);
    }
}

TEST_F(SoftTokenTest, TheCertificateIsTheOneThatOpensslMade) {
    IKeyCertificate* certificate = openCertificate();
    BSTR id = nullptr;
    EXPECT_HR(S_OK, certificate->GetCertID(&id));
    EXPECT_EQ("container1", take(id));
    const std::string expected = readTokenFile("certificate.der");
    VARIANT data;
    VariantInit(&data);
    EXPECT_HR(S_OK, certificate->GetCertData(&data));
    EXPECT_EQ(expected, takeBytes(&data));
    EXPECT_HR(S_OK, token->GetCertData(certificate, &data));
    EXPECT_EQ(expected, takeBytes(&data));
    EXPECT_EQ(0u, certificate->Release());
}

TEST_F(SoftTokenTest, ACertificateKeepsItsContainerAndToken) {
    IKeyCertificate* certificate = openCertificate();
    EXPECT_EQ(1u, token->Release());
    token = nullptr;
    VARIANT data;
    VariantInit(&data);
    EXPECT_HR(S_OK, certificate->GetCertData(&data));
    EXPECT_EQ(readTokenFile("certificate.der"), takeBytes(&data));
    EXPECT_EQ(0u, certificate->Release());
}

}  // namespace
}  // namespace zr::test
