// Login, PIN change and closing.
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class TokenPinTest : public TokenTest {
protected:
    /// Whether the object is logged in: without a login, SignData returns a special code.
    bool isLoggedIn() {
        VARIANT result = {};
        const ByteArray data("x");
        return token->SignData(nullptr, data, nullptr, &result) != RPC_E_CANTCALLOUT_INEXTERNALCALL;
    }
};

TEST_F(TokenPinTest, VerifyPinOfTheUserLogsIn) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(Lines{"C_Login(1, 1, 1234)"}, module.takeCalls());
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinOfTheOfficerLogsIn) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_EQ(Lines{"C_Login(1, 0, 87654321)"}, module.takeCalls());
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinWithAWrongPinFailsWithoutARetry) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_EQ(Lines{"C_Login(1, 1, 9999)"}, module.takeCalls());
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinWithAnotherTypeIsRefusedAndKeepsTheLogin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    for (const INT type : {2, -1, 2147483647}) {
        EXPECT_HR(E_INVALIDARG, token->VerifyPIN(Text("1234"), type));
    }
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, SecondVerifyPinLogsOutAndTriesAgain) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ((Lines{"C_Login(1, 1, 1234)", "C_Logout(1)", "C_Login(1, 1, 1234)"}),
              module.takeCalls());
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinWithAFailedLogoutSucceeds) {
    module->fail("C_Login", 0, CKR_USER_ALREADY_LOGGED_IN);
    module->fail("C_Logout", 0, CKR_GENERAL_ERROR);
    EXPECT_HR(S_OK, token->VerifyPIN(Text("0000"), 0));
    EXPECT_EQ(3u, module.takeCalls().size());
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinWithAFailedSecondTryEndsTheLogin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module->fail("C_Login", 2, CKR_PIN_LOCKED);
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(TokenPinTest, FailedVerifyPinEndsThePreviousLogin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module->fail("C_Login", 1, CKR_DEVICE_REMOVED);
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinWithAnEmptyPinReachesTheToken) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text(""), 0));
    EXPECT_EQ(Lines{"C_Login(1, 1, )"}, module.takeCalls());
}

TEST_F(TokenPinTest, VerifyPinWithANullPinFailsWithoutACallAndEndsTheLogin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    EXPECT_HR(E_FAIL, token->VerifyPIN(nullptr, 0));
    EXPECT_EQ(Lines{}, module.takeCalls());
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(TokenPinTest, VerifyPinWith127BytesReachesTheToken) {
    const std::string longest(127, 'p');
    module->settings().userPin = longest.c_str();
    EXPECT_HR(S_OK, token->VerifyPIN(Text(longest), 0));
    EXPECT_EQ(Lines{"C_Login(1, 1, " + longest + ")"}, module.takeCalls());
}

TEST_F(TokenPinTest, VerifyPinWithMoreThan127BytesFailsWithoutACall) {
    for (const std::size_t length : {128, 10000}) {
        EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
        module.takeCalls();
        EXPECT_HR(E_FAIL, token->VerifyPIN(Text(std::string(length, 'p')), 0));
        EXPECT_TRUE(module.takeCalls().empty());
        EXPECT_FALSE(isLoggedIn());
    }
}

TEST_F(TokenPinTest, VerifyPinPassesThePinAsUtf8) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text(OLESTR("p\u00e4\u20ac")), 0));
    EXPECT_EQ(Lines{"C_Login(1, 1, p\xc3\xa4\xe2\x82\xac)"}, module.takeCalls());
}

TEST_F(TokenPinTest, ModifyPinLogsInWithTheOldPinAndSetsTheNew) {
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("12345678"), 0));
    EXPECT_EQ((Lines{"C_Login(1, 1, 1234)", "C_SetPIN(1, 1234, 12345678)"}), module.takeCalls());
    EXPECT_TRUE(isLoggedIn());
    EXPECT_HR(S_OK, token->ModifyPIN(Text("12345678"), Text("1234"), 0));
    EXPECT_EQ((Lines{"C_Logout(1)", "C_Login(1, 1, 12345678)", "C_SetPIN(1, 12345678, 1234)"}),
              module.takeCalls());
}

TEST_F(TokenPinTest, ModifyPinWithALengthOutsideFourToEightIsRefused) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    for (const std::string& pin :
         {std::string(), std::string(3, '1'), std::string(9, '1'), std::string(15, '1'),
          std::string(16, '1'), std::string(10000, '1')}) {
        EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text(pin), Text("1234"), 0)) << pin.size();
        EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), Text(pin), 0)) << pin.size();
    }
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(nullptr, Text("1234"), 0));
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), nullptr, 0));
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, ModifyPinWithAWrongPinEndsTheLogin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("4321"), Text("1111"), 0));
    EXPECT_EQ(0u, module.count("C_SetPIN"));
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(TokenPinTest, ModifyPinWithAnotherTypeFailsAfterTheLogout) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("1234"), Text("1111"), 2));
    EXPECT_EQ(Lines{"C_Logout(1)"}, module.takeCalls());
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(TokenPinTest, FailedModifyPinKeepsTheLogin) {
    module->fail("C_SetPIN", 1, CKR_PIN_INVALID);
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("1234"), Text("1111"), 0));
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(TokenPinTest, LastReleaseLogsOutAndClosesOnce) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    module->fail("C_Logout", 0, CKR_DEVICE_REMOVED);
    EXPECT_EQ(0u, token.release()->Release());
    EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)"}), module.takeCalls());
}

TEST_F(TokenPinTest, ScriptVerifyPinReturnsABoolean) {
    const ConsoleCapture console;
    const Text good("1234");
    const Text bad("0");
    VARIANT result;
    EXPECT_HR(S_OK, invoke(token.get(), 12, {string(good), number(0)}, &result));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(-1, result.boolVal);
    EXPECT_HR(E_FAIL, invoke(token.get(), 12, {string(bad), number(0)}, &result));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(0, result.boolVal);
    EXPECT_HR(S_OK, invoke(token.get(), 13, {string(bad), string(bad)}, &result));
    EXPECT_EQ(-1, result.boolVal);
}

TEST_F(TokenPinTest, ScriptVerifyPinTruncatesNumbersTowardZero) {
    const ConsoleCapture console;
    const Text pin("87654321");
    VARIANT result;
    EXPECT_HR(S_OK, invoke(token.get(), 12, {string(pin), number(1.9)}, &result));
    EXPECT_EQ(Lines{"C_Login(1, 0, 87654321)"}, module.takeCalls());
}

TEST_F(TokenPinTest, ScriptVerifyPinWithoutATypeLogsTheUserIn) {
    const ConsoleCapture console;
    const Text pin("1234");
    VARIANT result = poisoned();
    EXPECT_HR(S_OK, invoke(token.get(), 12, {string(pin)}, &result));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(VARIANT_TRUE, result.boolVal);
    EXPECT_EQ(Lines{"C_Login(1, 1, 1234)"}, module.takeCalls());
}

TEST_F(TokenPinTest, ScriptUnlockPinWithoutANewPinReturnsTrue) {
    const ConsoleCapture console;
    const Text pin("1234");
    VARIANT result = poisoned();
    EXPECT_HR(S_OK, invoke(token.get(), 13, {string(pin)}, &result));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(VARIANT_TRUE, result.boolVal);
    EXPECT_HR(E_INVALIDARG, invoke(token.get(), 13, {}, &result));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(TokenPinTest, ScriptTypedGettersWithoutATypeAreNotImplemented) {
    const ConsoleCapture console;
    VARIANT result;
    for (const DISPID id : {9, 10, 11}) {
        EXPECT_HR(E_NOTIMPL, invoke(token.get(), id, {}, &result));
    }
}

TEST_F(TokenPinTest, ScriptVerifyPinWithWrongArgumentsOrNoneIsRefused) {
    const ConsoleCapture console;
    const Text pin("1234");
    VARIANT empty = {};
    const std::vector<VARIANT> cases[] = {{}, {number(5), number(0)}, {empty, number(0)}};
    for (const auto& arguments : cases) {
        VARIANT result = poisoned();
        EXPECT_HR(E_INVALIDARG, invoke(token.get(), 12, arguments, &result));
        EXPECT_EQ(VT_BOOL, result.vt);
        EXPECT_EQ(0, result.boolVal);
    }
    VARIANT result;
    EXPECT_HR(E_INVALIDARG, invoke(token.get(), 13, {string(pin), number(0)}, &result));
    EXPECT_HR(E_INVALIDARG, invoke(token.get(), 17, {number(7)}, &result));
    EXPECT_HR(E_INVALIDARG, invoke(token.get(), 17, {}, &result));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenPinTest, ScriptVerifyPinIgnoresExtraArguments) {
    const ConsoleCapture console;
    const Text pin("1234");
    std::vector<VARIANT> arguments(10000, number(0));
    arguments[0] = string(pin);
    VARIANT result;
    EXPECT_HR(S_OK, invoke(token.get(), 12, arguments, &result));
}

TEST_F(TokenTest, VerifyPinRetriesWithTheSamePinWhenTheModuleOverwritesIt) {
    module->settings().overwritesPin = true;
    module->fail("C_Login", 1, CKR_USER_ALREADY_LOGGED_IN);
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ((Lines{"C_Login(1, 1, 1234)", "C_Logout(1)", "C_Login(1, 1, 1234)"}),
              module.takeCalls());
}

}  // namespace
}  // namespace zr::test
