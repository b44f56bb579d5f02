// docs/habits.md: PINs and logins.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class LoginHabit : public LoggedInSoftTokenTest {
protected:
    static HRESULT sign(const ComRef<IKeyObject>& with, const ComRef<IKeyCertificate>& key) {
        ByteArray signature;
        return with->SignData(nullptr, ByteArray("data"), key.get(), signature.receive());
    }
};

using ARefusedPINEndsTheLogin = LoginHabit;
using ObjectsOfOneTokenShareItsLogin = LoginHabit;
using PINsAreCountedInBytes = LoginHabit;

TEST_F(ARefusedPINEndsTheLogin, SignDataAfterARefusedPinIsRefused) {
    const ComRef<IKeyCertificate> certificate = openCertificate();
    EXPECT_HR(S_OK, sign(token, certificate));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, sign(token, certificate));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, sign(token, certificate));
}

TEST_F(ARefusedPINEndsTheLogin, ObjectsOfTheTokenAreLoggedOutToo) {
    const ComRef<IKeyObject> second = openToken(provider);
    ASSERT_HR(S_OK, second->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(E_FAIL, sign(second, openCertificate()));
}

TEST_F(ObjectsOfOneTokenShareItsLogin, EachObjectRemembersItsOwnVerifyPin) {
    const ComRef<IKeyObject> second = openToken(provider);
    const ComRef<IKeyCertificate> certificate = openCertificate();
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, sign(second, certificate));
    EXPECT_HR(S_OK, second->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, sign(second, certificate));
    EXPECT_HR(S_OK, sign(token, certificate));
}

TEST_F(ObjectsOfOneTokenShareItsLogin, ReleaseOfOneObjectLogsOutTheOther) {
    ComRef<IKeyObject> second = openToken(provider);
    ASSERT_HR(S_OK, second->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, second.release()->Release());
    EXPECT_HR(E_FAIL, sign(token, openCertificate()));
}

TEST_F(PINsAreCountedInBytes, FourLettersOfTwoBytesAreALongPin) {
    const Text eightBytes("\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F");
    const Text nineBytes(
        "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F"
        "1");
    EXPECT_HR(E_INVALIDARG, token->ModifyPIN(Text("1234"), nineBytes, 0));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), eightBytes, 0));
    EXPECT_HR(S_OK, sign(token, openCertificate()));
    EXPECT_HR(S_OK, token->ModifyPIN(eightBytes, Text("1234"), 0));
}

TEST_F(PINsAreCountedInBytes, ALongPinLogsInAndCannotBeChanged) {
    const ComRef<IKeyObject> other = openToken(provider, "Long");
    ASSERT_TRUE(other);
    EXPECT_HR(S_OK, other->VerifyPIN(Text("a long PIN"), 0));
    EXPECT_HR(E_INVALIDARG, other->ModifyPIN(Text("a long PIN"), Text("1234"), 0));
}

TEST_F(PINsAreCountedInBytes, ModifyPinLeavesTheObjectLoggedInUnderItsType) {
    const ComRef<IKeyCertificate> certificate = openCertificate();
    EXPECT_HR(S_OK, token->ModifyPIN(Text("87654321"), Text("87654321"), 1));
    // SoftHSM2 has no private key for the officer.
    EXPECT_HR(E_FAIL, sign(token, certificate));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("1234"), 0));
    EXPECT_HR(S_OK, sign(token, certificate));
}

}  // namespace
}  // namespace zr::test
