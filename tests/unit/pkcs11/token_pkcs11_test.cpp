// The parts of the backend's classes that hosts neither call nor see.
#include <string_view>

#include "tests/support/fixtures/objects.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class BackendTest : public ObjectsTest {
protected:
    /// Whether the memory of the token object contains a text.
    bool holds(std::string_view text) const {
        return std::string_view(reinterpret_cast<const char*>(token), sizeof *token).find(text) !=
               std::string_view::npos;
    }

    std::string algorithms() {
        Text text;
        EXPECT_HR(S_OK, token->GetAlgoList(text.receive()));
        return narrow(text);
    }

    VARIANT result = {};
};

TEST_F(BackendTest, ProviderDestructorDoesNotUnload) {
    auto* other = new TokenProvider_pkcs11;
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    module.takeCalls();
    delete other;
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(BackendTest, VerifyPinWithAWrongPinKeepsThePreviousPin) {
    EXPECT_TRUE(holds("1234"));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("refused"), 0));
    EXPECT_FALSE(holds("refused"));
    EXPECT_TRUE(holds("1234"));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_TRUE(holds("87654321"));
    EXPECT_FALSE(holds("1234"));
}

TEST_F(BackendTest, ModifyPinKeepsTheOldPin) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("999999"), 0));
    EXPECT_TRUE(holds("1234"));
    EXPECT_FALSE(holds("999999"));
}

TEST_F(BackendTest, CloseKeyWithAFailedCloseDropsTheSession) {
    module->fail("C_CloseSession", 1, CKR_DEVICE_REMOVED);
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)"}), module.takeCalls());
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(BackendTest, SetAlgoListAndSetDigestListReplaceTheList) {
    EXPECT_EQ(1, token->SetAlgoList("first"));
    EXPECT_EQ(1, token->SetAlgoList("2nd;x"));
    EXPECT_EQ("2nd;x", algorithms());
    EXPECT_EQ(1, token->SetDigestList("third"));
    EXPECT_EQ(1, token->SetDigestList("4th;y"));
    EXPECT_TRUE(holds("4th;y"));
    EXPECT_FALSE(holds("third"));
    EXPECT_EQ("2nd;x", algorithms());
}

TEST_F(BackendTest, SetAlgoListAndSetDigestListWith500BytesOrNullKeepTheList) {
    const std::string longest(499, 'a');
    const std::string longestDigest(499, 'd');
    EXPECT_EQ(1, token->SetAlgoList(longest.c_str()));
    EXPECT_EQ(1, token->SetDigestList(longestDigest.c_str()));
    EXPECT_EQ(1, token->SetAlgoList(std::string(500, 'b').c_str()));
    EXPECT_EQ(1, token->SetDigestList(std::string(500, 'e').c_str()));
    EXPECT_EQ(1, token->SetAlgoList(nullptr));
    EXPECT_EQ(1, token->SetDigestList(nullptr));
    EXPECT_EQ(longest, algorithms());
    EXPECT_TRUE(holds(longestDigest));
    EXPECT_FALSE(holds(std::string(8, 'b')));
    EXPECT_FALSE(holds(std::string(8, 'e')));
}

TEST_F(BackendTest, OperationsWithAFailingCertificateIdReturnItsCode) {
    KeyCertificate unnamed(nullptr);
    EXPECT_HR(E_NOTIMPL, token->SignData(nullptr, ByteArray("x"), &unnamed, &result));
    EXPECT_HR(E_NOTIMPL, token->VerifyData(ByteArray("x"), &unnamed, nullptr, ByteArray("x")));
    EXPECT_HR(E_NOTIMPL, token->GetPubKeyData(&unnamed, &result));
    EXPECT_HR(E_FAIL, token->GetCertData(&unnamed, &result));
    EXPECT_EQ(VT_EMPTY, result.vt);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(ModuleTest, GetPubKeyDataWithAFailingCertificateIdLogsTheReason) {
    folder.enableLog();
    const ConsoleCapture quiet;
    const ComRef<TokenProvider_pkcs11> provider = makeObject<TokenProvider_pkcs11>();
    ComRef<IKeyObject> token;
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    KeyCertificate unnamed(nullptr);
    VARIANT result = {};
    token->GetPubKeyData(&unnamed, &result);
    Lines lines = readLogLines(folder.home());
    ASSERT_LT(2u, lines.size());
    lines.erase(lines.begin(), lines.end() - 2);
    EXPECT_EQ((Lines{"[GetPubKeyData] Begin", "[GetPubKeyData] Error: GetCertID fail"}), lines);
}

}  // namespace
}  // namespace zr::test
