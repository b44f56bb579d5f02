// The backend's classes from inside: what hosts neither call nor see.
#include <string_view>

#include "tests/support/log_file.h"
#include "tests/unit/model/objects.h"

namespace zr::test {
namespace {

class BackendTest : public ObjectsTest {
protected:
    /// Whether a text lies somewhere in the token object.
    bool holds(std::string_view text) const {
        return std::string_view(reinterpret_cast<const char*>(token), sizeof *token).find(text) !=
               std::string_view::npos;
    }

    std::string algorithms() {
        BSTR text = nullptr;
        EXPECT_HR(S_OK, token->GetAlgoList(&text));
        const std::string list = narrow(text);
        SysFreeString(text);
        return list;
    }

    VARIANT result = {};
};

TEST_F(BackendTest, TheDestructorOfAProviderDoesNotUnload) {
    auto* other = new TokenProvider_pkcs11;
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    module.takeCalls();
    delete other;
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(BackendTest, ARefusedPinIsNotKept) {
    EXPECT_TRUE(holds("1234"));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("refused"), 0));
    EXPECT_FALSE(holds("refused"));
    EXPECT_TRUE(holds("1234"));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_TRUE(holds("87654321"));
    EXPECT_FALSE(holds("1234"));
}

TEST_F(BackendTest, AfterAChangeTheOldPinIsKept) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("999999"), 0));
    EXPECT_TRUE(holds("1234"));
    EXPECT_FALSE(holds("999999"));
}

TEST_F(BackendTest, ASessionThatDoesNotCloseIsForgotten) {
    module->fail("C_CloseSession", 1, CKR_DEVICE_REMOVED);
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)"}), module.takeCalls());
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(BackendTest, AListReplacesTheOneBefore) {
    EXPECT_EQ(1, token->SetAlgoList("first"));
    EXPECT_EQ(1, token->SetAlgoList("2nd;x"));
    EXPECT_EQ("2nd;x", algorithms());
    EXPECT_EQ(1, token->SetDigestList("third"));
    EXPECT_EQ(1, token->SetDigestList("4th;y"));
    EXPECT_TRUE(holds("4th;y"));
    EXPECT_FALSE(holds("third"));
    EXPECT_EQ("2nd;x", algorithms());
}

TEST_F(BackendTest, AListOf500BytesAndNoneAreRefusedAndTheListStays) {
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

TEST_F(BackendTest, ACertificateWithoutAnIdAnswersItsOwnCode) {
    KeyCertificate unnamed(nullptr);
    EXPECT_HR(E_NOTIMPL, token->SignData(nullptr, Bytes("x"), &unnamed, &result));
    EXPECT_HR(E_NOTIMPL, token->VerifyData(Bytes("x"), &unnamed, nullptr, Bytes("x")));
    EXPECT_HR(E_NOTIMPL, token->GetPubKeyData(&unnamed, &result));
    EXPECT_HR(E_FAIL, token->GetCertData(&unnamed, &result));
    EXPECT_EQ(VT_EMPTY, result.vt);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(ModuleTest, APublicKeyLookUpWithoutAnIdTellsWhy) {
    folder.enableLog();
    const ConsoleCapture quiet;
    auto* provider = new TokenProvider_pkcs11;
    provider->AddRef();
    IKeyObject* token = nullptr;
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    EXPECT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
    KeyCertificate unnamed(nullptr);
    VARIANT result = {};
    token->GetPubKeyData(&unnamed, &result);
    Lines lines = readLogLines(folder.home());
    ASSERT_LT(2u, lines.size());
    lines.erase(lines.begin(), lines.end() - 2);
    EXPECT_EQ((Lines{"[GetPubKeyData] Begin", "[GetPubKeyData] Error: GetCertID fail"}), lines);
    token->Release();
    provider->Release();
}

}  // namespace
}  // namespace zr::test
