// Logins and PINs on a real token.
#include "tests/token/soft_token.h"

namespace zr::test {
namespace {

TEST_F(SoftTokenTest, AWrongPinIsRefusedAndTheRightOneLogsIn) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(nullptr, 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(LoggedInSoftTokenTest, ASecondLoginSucceeds) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(LoggedInSoftTokenTest, ATypeThatIsNeitherUserNorOfficerIsRefused) {
    EXPECT_HR(E_INVALIDARG, token->VerifyPIN(Text("1234"), 2));
    EXPECT_HR(E_INVALIDARG, token->VerifyPIN(Text("1234"), -1));
}

TEST_F(SoftTokenTest, TheSecurityOfficerLogsInWithHisPinOnly) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 1));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    // SoftHSM2 lets nobody else in then.
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, TheUsersPinIsChangedAndChangedBack) {
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("56789012"), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("56789012"), 0));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("56789012"), Text("1234"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, TheOfficersPinIsChangedAndChangedBack) {
    EXPECT_HR(S_OK, token->ModifyPIN(Text("87654321"), Text("12345"), 1));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("12345"), Text("87654321"), 1));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
}

TEST_F(SoftTokenTest, APinIsNotChangedWithTheWrongOldOne) {
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("4321"), Text("5678"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, PinsOfThreeAndOfNineCharactersAreRefused) {
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), Text("567"), 0));
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), Text("567890123"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, ReleasingTheTokenLogsOut) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_EQ(0u, token->Release());
    token = openToken(provider);
    ASSERT_TRUE(token);
    // The officer's login would refuse the user's.
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

}  // namespace
}  // namespace zr::test
