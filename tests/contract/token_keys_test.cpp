// Which key signs and verifies, and the checks before the search for a key.
#include <algorithm>

#include "tests/support/fixtures/foreign_certificate.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class TokenKeysTest : public TokenTest {
protected:
    void logIn() {
        EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
        module.takeCalls();
    }

    HRESULT sign(const VARIANT& input) {
        Variant signature;
        return token->SignData(nullptr, input, &certificate, signature.receive());
    }
    HRESULT verify(const VARIANT& input, const VARIANT& signature) {
        return token->VerifyData(input, &certificate, nullptr, signature);
    }

    /// Whether the function was called with a key.
    bool wasCalled(const std::string& function, CK_OBJECT_HANDLE key) {
        const Lines calls = module.takeCalls();
        return std::count(calls.begin(), calls.end(),
                          function + "(1, 6/0, " + std::to_string(key) + ")") == 1;
    }

    ForeignCertificate certificate;  ///< its ID is "a"
    const ByteArray data{"data"};
    const VARIANT empty = {};
};

TEST_F(TokenKeysTest, VerifyDataWithoutALoginChecksTheArraysFirst) {
    EXPECT_HR(E_INVALIDARG, verify(empty, data));
    EXPECT_HR(E_INVALIDARG, verify(data, empty));
    EXPECT_EQ(0, certificate.asked);
}

TEST_F(TokenKeysTest, VerifyDataWithoutALoginDoesNotRequestTheId) {
    certificate.answer = E_OUTOFMEMORY;
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, verify(data, data));
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, token->VerifyData(data, nullptr, nullptr, data));
    EXPECT_EQ(0, certificate.asked);
}

TEST_F(TokenKeysTest, VerifyDataWithAFailingIdReturnsItsCodeWithoutACall) {
    logIn();
    certificate.answer = E_OUTOFMEMORY;
    EXPECT_HR(E_OUTOFMEMORY, verify(data, data));
    EXPECT_EQ(1, certificate.asked);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(TokenKeysTest, VerifyDataWithAWrongArrayDoesNotRequestTheId) {
    logIn();
    certificate.answer = E_OUTOFMEMORY;
    EXPECT_HR(E_INVALIDARG, verify(empty, data));
    EXPECT_HR(E_INVALIDARG, verify(data, empty));
    EXPECT_EQ(0, certificate.asked);
}

TEST_F(TokenKeysTest, SignDataChecksArrayLoginAndIdInThisOrder) {
    certificate.answer = E_OUTOFMEMORY;
    EXPECT_HR(E_INVALIDARG, sign(empty));
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, sign(data));
    EXPECT_EQ(0, certificate.asked);
    logIn();
    EXPECT_HR(E_OUTOFMEMORY, sign(data));
    EXPECT_EQ(1, certificate.asked);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(TokenKeysTest, SignDataComparesTheKeyIdUpToItsFirstZero) {
    logIn();
    module.addKey(CKO_PRIVATE_KEY, std::string("\0a", 2));
    module.addKey(CKO_PRIVATE_KEY, std::string("aa\0", 3));
    const CK_OBJECT_HANDLE key = module.addKey(CKO_PRIVATE_KEY, std::string("a\0rest", 6));
    EXPECT_HR(S_OK, sign(data));
    EXPECT_TRUE(wasCalled("C_SignInit", key));
}

TEST_F(TokenKeysTest, VerifyDataComparesTheKeyIdUpToItsFirstZero) {
    logIn();
    const CK_OBJECT_HANDLE key = module.addKey(CKO_PUBLIC_KEY, std::string("a\0rest", 6));
    verify(data, data);
    EXPECT_TRUE(wasCalled("C_VerifyInit", key));
}

TEST_F(TokenKeysTest, GetPubKeyDataOfAKeyIdWithAZeroReturnsAllBytes) {
    certificate.id = OLESTR("");
    module.addKey(CKO_PUBLIC_KEY, std::string("a\0rest", 6));
    ByteArray id;
    EXPECT_HR(S_OK, token->GetPubKeyData(&certificate, id.receive()));
    EXPECT_EQ(std::string("a\0rest", 6), id.bytes());
}

TEST_F(TokenKeysTest, SignDataWithTwoKeysOfOneIdUsesTheFirst) {
    logIn();
    const CK_OBJECT_HANDLE key = module.addKey(CKO_PRIVATE_KEY, "a");
    module.addKey(CKO_PRIVATE_KEY, "a");
    EXPECT_HR(S_OK, sign(data));
    EXPECT_EQ(1u, module.count("C_FindObjects"));
    EXPECT_TRUE(wasCalled("C_SignInit", key));
}

}  // namespace
}  // namespace zr::test
