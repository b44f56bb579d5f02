// The arrays that operations hand out: their bounds, and the type of their elements.
#include "tests/contract/token_files.h"

namespace zr::test {
namespace {

class TokenArraysTest : public SigningTokenTest {
protected:
    /// Expects one dimension from 0, and clears the result.
    void expectArray(VARTYPE variantType, VARTYPE elementType, ULONG length) {
        ASSERT_EQ(VT_ARRAY | variantType, result.vt);
        EXPECT_EQ(1, result.parray->cDims);
        EXPECT_EQ(0, result.parray->rgsabound[0].lLbound);
        EXPECT_EQ(length, result.parray->rgsabound[0].cElements);
        VARTYPE type = VT_EMPTY;
        EXPECT_HR(S_OK, SafeArrayGetVartype(result.parray, &type));
        EXPECT_EQ(elementType, type);
        VariantClear(&result);
    }
};

TEST_F(TokenArraysTest, NamesAreStrings) {
    EXPECT_HR(S_OK, token->EnumContainer(0, &result));
    expectArray(VT_BSTR, VT_BSTR, 1);
}

TEST_F(TokenArraysTest, CertificatesAreBytes) {
    EXPECT_HR(S_OK, certificate->GetCertData(&result));
    expectArray(VT_UI1, VT_UI1, 1);
    EXPECT_HR(S_OK, token->GetCertData(certificate, &result));
    expectArray(VT_UI1, VT_UI1, 1);
}

TEST_F(TokenArraysTest, SignaturesAreSignedElementsUnderAnUnsignedType) {
    EXPECT_HR(S_OK, token->SignData(nullptr, Bytes("x"), certificate, &result));
    expectArray(VT_UI1, VT_I1, 256);
}

TEST_F(TokenArraysTest, DigestsAreBytes) {
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), Bytes("x"), &result));
    expectArray(VT_UI1, VT_UI1, 16);
}

TEST_F(TokenArraysTest, PublicKeyDataAreBytes) {
    module->setAttribute(publicKey, CKA_KEY_TYPE, "a", 2);
    EXPECT_HR(S_OK, token->GetPubKeyData(certificate, &result));
    expectArray(VT_UI1, VT_UI1, 1);
}

TEST_F(TokenFilesFixture, ContentsAreSignedElementsFromZero) {
    module.addData("6", "abc");
    IKeyFile* file = open("7");
    VARIANT data = {};
    EXPECT_HR(S_OK, file->Read(2, &data));
    ASSERT_EQ(VT_ARRAY | VT_UI1, data.vt);
    EXPECT_EQ(1, data.parray->cDims);
    EXPECT_EQ(0, data.parray->rgsabound[0].lLbound);
    EXPECT_EQ(2u, data.parray->rgsabound[0].cElements);
    VariantClear(&data);
    file->Release();
}

}  // namespace
}  // namespace zr::test
