// The Cryptoki calls of the operations that list certificates.
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class TokenContainerCallsTest : public TokenTest {
protected:
    TokenContainerCallsTest() {
        module.addCertificate("a", "first");
        module.addCertificate("b", "second");
        module.takeCalls();
    }

    ComRef<IKeyContainer> open(const VARIANT& which) {
        ComRef<IKeyContainer> container;
        EXPECT_HR(S_OK, token->OpenContainer(which, container.receive()));
        return container;
    }

    static VARIANT index(LONG value) {
        VARIANT variant = {};
        variant.vt = VT_I4;
        variant.lVal = value;
        return variant;
    }

    const Text second{"b"};
    const Lines walkToTheSecond = {
        "C_FindObjectsInit(1, {0x0=1 0x1=1})",
        "C_FindObjects(1, 1)",
        "C_GetAttributeValue(1, 1, {0x0 0x80 0x102})",
        "C_GetAttributeValue(1, 1, {0x0=0 0x80[] 0x102[]})",
        "C_FindObjects(1, 1)",
        "C_GetAttributeValue(1, 2, {0x0 0x80 0x102})",
        "C_GetAttributeValue(1, 2, {0x0=0 0x80[] 0x102[]})",
    };
};

TEST_F(TokenContainerCallsTest, EnumContainerReadsEachCertificateToTheEnd) {
    Variant names;
    EXPECT_HR(S_OK, token->EnumContainer(0, names.receive()));
    Lines expected = walkToTheSecond;
    expected.insert(expected.end(), {"C_FindObjects(1, 1)", "C_FindObjectsFinal(1)"});
    EXPECT_EQ(expected, module.takeCalls());
}

TEST_F(TokenContainerCallsTest, OpenContainerByNameReadsUpToTheMatch) {
    ComRef<IKeyContainer> container = open(string(second));
    Lines expected = walkToTheSecond;
    expected.push_back("C_FindObjectsFinal(1)");
    EXPECT_EQ(expected, module.takeCalls());
}

TEST_F(TokenContainerCallsTest, OpenContainerByIndexReadsUpToTheMatch) {
    ComRef<IKeyContainer> container = open(index(1));
    Lines expected = walkToTheSecond;
    expected.push_back("C_FindObjectsFinal(1)");
    EXPECT_EQ(expected, module.takeCalls());
}

TEST_F(TokenContainerCallsTest, GetCertDataReadsFourAttributesUpToTheMatch) {
    const ComRef<IKeyCertificate> certificate = openCertificate(token.get(), string(second));
    module.takeCalls();
    ByteArray data;
    EXPECT_HR(S_OK, certificate->GetCertData(data.receive()));
    EXPECT_EQ("second", data.bytes());
    EXPECT_EQ((Lines{
                  "C_FindObjectsInit(1, {0x0=1 0x1=1})",
                  "C_FindObjects(1, 1)",
                  "C_GetAttributeValue(1, 1, {0x0 0x80 0x102 0x11})",
                  "C_GetAttributeValue(1, 1, {0x0=0 0x80[] 0x102[] 0x11[5]})",
                  "C_FindObjects(1, 1)",
                  "C_GetAttributeValue(1, 2, {0x0 0x80 0x102 0x11})",
                  "C_GetAttributeValue(1, 2, {0x0=0 0x80[] 0x102[] 0x11[6]})",
                  "C_FindObjectsFinal(1)",
              }),
              module.takeCalls());
}

}  // namespace
}  // namespace zr::test
