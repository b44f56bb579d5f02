// The search for a key: cases that hosts cannot reach by signing and verifying.
#include "tests/support/fixtures/objects.h"

namespace zr::test {
namespace {

class TokenPkcs11SignTest : public ObjectsTest {
protected:
    /// The call that starts a search for a key.
    std::string searchFor(int publicFlag, ULONG keyType) {
        CK_OBJECT_HANDLE found = 0;
        token->GetPubPriKeyHandle(&found, publicFlag, keyType, "id");
        return module.takeCalls().at(0);
    }
};

TEST_F(TokenPkcs11SignTest, GetPubPriKeyHandleSearchesForTheRequestedKeyType) {
    EXPECT_EQ("C_FindObjectsInit(1, {0x0=3 0x1=1 0x100=0})", searchFor(0, 0));
    EXPECT_EQ("C_FindObjectsInit(1, {0x0=3 0x1=1 0x100=3})", searchFor(0, 3));
    EXPECT_EQ("C_FindObjectsInit(1, {0x0=2 0x1=1 0x100=3})", searchFor(1, 3));
}

TEST_F(TokenPkcs11SignTest, GetPubPriKeyHandleWithANonzeroFlagSearchesForAPublicKey) {
    for (const int flag : {1, 2, 256, -1}) {
        EXPECT_EQ("C_FindObjectsInit(1, {0x0=2 0x1=1 0x100=0})", searchFor(flag, 0)) << flag;
    }
}

TEST_F(TokenPkcs11SignTest, GetPubPriKeyHandleFindsNoKeyOfAnotherType) {
    module.addKey(CKO_PRIVATE_KEY, "id");
    CK_OBJECT_HANDLE found = 77;
    EXPECT_HR(E_FAIL, token->GetPubPriKeyHandle(&found, 0, 3, "id"));
    EXPECT_EQ(77u, found);
}

TEST_F(TokenPkcs11SignTest, GetPubPriKeyHandleComparesIdsUpToTheirFirstZero) {
    module.addKey(CKO_PRIVATE_KEY, "idx");
    const CK_OBJECT_HANDLE key = module.addKey(CKO_PRIVATE_KEY, std::string("id\0x", 4));
    CK_OBJECT_HANDLE found = 0;
    EXPECT_HR(S_OK, token->GetPubPriKeyHandle(&found, 0, CKK_RSA, "id"));
    EXPECT_EQ(key, found);
}

}  // namespace
}  // namespace zr::test
