// The arrays that operations hand out: their bounds, and the type of their elements.
#include "tests/support/fixtures/token_files.h"

namespace zr::test {
namespace {

class TokenArraysTest : public SigningTokenTest {
protected:
    /// Expects one dimension from 0.
    void expectArray(VARTYPE variantType, VARTYPE elementType, ULONG length) {
        ASSERT_EQ(VT_ARRAY | variantType, result.get().vt);
        EXPECT_EQ(1, result.get().parray->cDims);
        EXPECT_EQ(0, result.get().parray->rgsabound[0].lLbound);
        EXPECT_EQ(length, result.get().parray->rgsabound[0].cElements);
        VARTYPE type = VT_EMPTY;
        EXPECT_HR(S_OK, SafeArrayGetVartype(result.get().parray, &type));
        EXPECT_EQ(elementType, type);
    }
};

TEST_F(TokenArraysTest, EnumContainerReturnsStrings) {
    EXPECT_HR(S_OK, token->EnumContainer(0, result.receive()));
    expectArray(VT_BSTR, VT_BSTR, 1);
}

TEST_F(TokenArraysTest, GetCertDataReturnsBytes) {
    EXPECT_HR(S_OK, certificate->GetCertData(result.receive()));
    expectArray(VT_UI1, VT_UI1, 1);
    EXPECT_HR(S_OK, token->GetCertData(certificate.get(), result.receive()));
    expectArray(VT_UI1, VT_UI1, 1);
}

TEST_F(TokenArraysTest, SignDataReturnsSignedElementsUnderAnUnsignedType) {
    EXPECT_HR(S_OK, token->SignData(nullptr, ByteArray("x"), certificate.get(), result.receive()));
    expectArray(VT_UI1, VT_I1, 256);
}

TEST_F(TokenArraysTest, DigestDataReturnsBytes) {
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), ByteArray("x"), result.receive()));
    expectArray(VT_UI1, VT_UI1, 16);
}

TEST_F(TokenArraysTest, GetPubKeyDataReturnsBytes) {
    module->setAttribute(publicKey, CKA_KEY_TYPE, "a", 2);
    EXPECT_HR(S_OK, token->GetPubKeyData(certificate.get(), result.receive()));
    expectArray(VT_UI1, VT_UI1, 1);
}

using TokenFileArraysTest = TokenFilesFixture;

TEST_F(TokenFileArraysTest, ReadReturnsOneDimensionFromZero) {
    module.addData("6", "abc");
    ComRef<IKeyFile> file = open("7");
    Variant data;
    EXPECT_HR(S_OK, file->Read(2, data.receive()));
    ASSERT_EQ(VT_ARRAY | VT_UI1, data.type());
    EXPECT_EQ(1, data.get().parray->cDims);
    EXPECT_EQ(0, data.get().parray->rgsabound[0].lLbound);
    EXPECT_EQ(2u, data.get().parray->rgsabound[0].cElements);
}

}  // namespace
}  // namespace zr::test
