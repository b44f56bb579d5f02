// Containers and certificates on a real token.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

TEST_F(SoftTokenTest, GetContainerCountReturnsOne) {
    VARIANT count = {};
    EXPECT_HR(S_OK, token->GetContainerCount(&count));
    EXPECT_EQ(VT_UI4, count.vt);
    EXPECT_EQ(1u, count.ulVal);
}

TEST_F(SoftTokenTest, EnumContainerListsTheId) {
    Variant names;
    EXPECT_HR(S_OK, token->EnumContainer(0, names.receive()));
    EXPECT_EQ(Lines{"container1"}, names.toTexts());
}

TEST_F(SoftTokenTest, OpenContainerAcceptsNameAndIndexOnly) {
    const Text name("container1");
    const Text otherName("container2");
    for (const VARIANT& which : {string(name), Variant::fromNumber(0).get()}) {
        ComRef<IKeyContainer> container;
        ASSERT_HR(S_OK, token->OpenContainer(which, container.receive()));
        Text type;
        EXPECT_HR(S_OK, container->GetType(type.receive()));
        EXPECT_EQ("", narrow(type));
        EXPECT_EQ(0u, container.release()->Release());
    }
    for (const VARIANT& which : {string(otherName), Variant::fromNumber(1).get(),
                                 Variant::fromNumber(-1).get(), number(0).get()}) {
        ComRef<IKeyContainer> container;
        EXPECT_HR(E_FAIL, token->OpenContainer(which, container.receive()));
        EXPECT_FALSE(container);
    }
}

TEST_F(SoftTokenTest, GetCertDataReturnsTheCertificateOfOpenssl) {
    ComRef<IKeyCertificate> certificate = openCertificate();
    Text id;
    EXPECT_HR(S_OK, certificate->GetCertID(id.receive()));
    EXPECT_EQ("container1", narrow(id));
    const std::string expected = readTokenFile("certificate.der");
    ByteArray data;
    EXPECT_HR(S_OK, certificate->GetCertData(data.receive()));
    EXPECT_EQ(expected, data.bytes());
    EXPECT_HR(S_OK, token->GetCertData(certificate.get(), data.receive()));
    EXPECT_EQ(expected, data.bytes());
    EXPECT_EQ(0u, certificate.release()->Release());
}

TEST_F(SoftTokenTest, ReleaseOfATokenWithACertificateKeepsTheTokenAlive) {
    ComRef<IKeyCertificate> certificate = openCertificate();
    EXPECT_EQ(1u, token.release()->Release());
    ByteArray data;
    EXPECT_HR(S_OK, certificate->GetCertData(data.receive()));
    EXPECT_EQ(readTokenFile("certificate.der"), data.bytes());
    EXPECT_EQ(0u, certificate.release()->Release());
}

}  // namespace
}  // namespace zr::test
