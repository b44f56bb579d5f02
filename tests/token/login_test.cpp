// Logins and PINs on a real token.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

TEST_F(SoftTokenTest, VerifyPinAcceptsTheRightPinOnly) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(nullptr, 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(LoggedInSoftTokenTest, SecondVerifyPinSucceeds) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(LoggedInSoftTokenTest, VerifyPinWithAnotherTypeIsRefused) {
    EXPECT_HR(E_INVALIDARG, token->VerifyPIN(Text("1234"), 2));
    EXPECT_HR(E_INVALIDARG, token->VerifyPIN(Text("1234"), -1));
}

TEST_F(SoftTokenTest, VerifyPinOfTheOfficerAcceptsTheOfficersPinOnly) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 1));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    // SoftHSM2 then refuses the login of the user.
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, ModifyPinOfTheUserChangesThePin) {
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("56789012"), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("56789012"), 0));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("56789012"), Text("1234"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, ModifyPinOfTheOfficerChangesThePin) {
    EXPECT_HR(S_OK, token->ModifyPIN(Text("87654321"), Text("12345"), 1));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("12345"), Text("87654321"), 1));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
}

TEST_F(SoftTokenTest, ModifyPinWithTheWrongOldPinFails) {
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("4321"), Text("5678"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, ModifyPinToThreeOrNineCharactersIsRefused) {
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), Text("567"), 0));
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), Text("567890123"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, LastReleaseOfTheTokenLogsOut) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_EQ(0u, token.release()->Release());
    token = openToken(provider);
    ASSERT_TRUE(token);
    // With the officer logged in, SoftHSM2 would refuse the user.
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

}  // namespace
}  // namespace zr::test
