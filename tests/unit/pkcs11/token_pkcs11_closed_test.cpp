// Objects used after their token was closed or its module unloaded: misuse that must not crash.
#include "tests/support/fixtures/objects.h"

namespace zr::test {
namespace {

class ClosedTokenTest : public ObjectsTest {
protected:
    /// Every operation that needs the token fails; the objects still return their own data.
    void expectUnusable() {
        VARIANT variant = {};
        void* out = nullptr;
        const ByteArray data("data");
        const Text id("id");
        EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
        EXPECT_HR(E_FAIL, token->ModifyPIN(Text("1234"), Text("4321"), 0));
        EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
                  token->SignData(nullptr, data, certificate, &variant));
        EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
                  token->VerifyData(data, certificate, nullptr, data));
        EXPECT_HR(E_FAIL, token->CreateFile(Text("9"), 0, 0, 0, 0, &out));
        EXPECT_HR(E_FAIL, token->FileExists(Text("7"), &variant));
        EXPECT_EQ(0, variant.lVal);
        EXPECT_HR(E_FAIL, token->OpenFile(Text("7"), &out));
        EXPECT_HR(E_FAIL, token->DeleteFile(Text("7")));
        EXPECT_HR(E_FAIL, token->OpenContainer(string(id), &out));
        EXPECT_HR(S_OK, token->GetContainerCount(&variant));
        EXPECT_EQ(0u, variant.ulVal);
        EXPECT_HR(E_FAIL, token->GetCertData(certificate, &variant));
        EXPECT_HR(E_FAIL, certificate->GetCertData(&variant));
        EXPECT_HR(E_FAIL, file->Flush());
        EXPECT_EQ(nullptr, out);

        Text name;
        EXPECT_HR(S_OK, certificate->GetCertID(name.receive()));
        EXPECT_EQ("id", narrow(name));
        EXPECT_HR(S_OK, file->Read(8, &variant));
        EXPECT_EQ("contents", takeBytes(&variant));
        EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, &variant));
        EXPECT_EQ(16u, takeBytes(&variant).size());
    }
};

TEST_F(ClosedTokenTest, CloseKeyTwiceLogsOutAndClosesOnce) {
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)"}), module.takeCalls());
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(ClosedTokenTest, GetLabelAfterCloseKeySucceeds) {
    token->CloseKey();
    Text label;
    EXPECT_HR(S_OK, token->GetLabel(label.receive()));
}

TEST_F(ClosedTokenTest, OperationsAfterCloseKeyFail) {
    token->CloseKey();
    module->fail(nullptr, 0,
                 CKR_SESSION_HANDLE_INVALID);  // a module's result for a closed session
    expectUnusable();
}

TEST_F(ClosedTokenTest, OperationsAfterUnloadFailWithoutACall) {
    token->CloseKey();
    provider->Unload();
    module.takeCalls();
    expectUnusable();
    EXPECT_EQ(Lines{}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
