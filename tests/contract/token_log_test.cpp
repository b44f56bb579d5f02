// What the operations of a token write to the log: information, PINs, containers.
#include "tests/support/fixtures/token_log.h"

namespace zr::test {
namespace {

TEST_F(TokenLogTest, OperationsLogTheirNames) {
    BSTR text = nullptr;
    VARIANT none = {};
    const std::vector<std::pair<std::string, std::function<HRESULT()>>> operations = {
        {"GetSerialNumber", [&] { return token->GetSerialNumber(&text); }},
        {"GetLabel", [&] { return token->GetLabel(&text); }},
        {"GetManufacturerID", [&] { return token->GetManufacturerID(&text); }},
        {"GetModelID", [&] { return token->GetModelID(&text); }},
        {"GetTotalSize", [&] { return token->GetTotalSize(result.receive()); }},
        {"GetFreeSize", [&] { return token->GetFreeSize(result.receive()); }},
        {"SetLabel", [&] { return token->SetLabel(&text, result.receive()); }},
        {"VerifyPIN", [&] { return token->VerifyPIN(Text("1234"), 0); }},
        {"UnlockPIN", [&] { return token->UnlockPIN(nullptr, nullptr); }},
        {"GetMaxRetryCount", [&] { return token->GetMaxRetryCount(0, result.receive()); }},
        {"GetRemainRetryCount", [&] { return token->GetRemainRetryCount(0, result.receive()); }},
        {"IsDefaultPIN", [&] { return token->IsDefaultPIN(0, result.receive()); }},
        {"Lock", [&] { return token->Lock(result.receive()); }},
        {"Unlock", [&] { return token->Unlock(result.receive()); }},
        {"EnumFiles", [&] { return token->EnumFiles(result.receive()); }},
        {"CreateContainer", [&] { return token->CreateContainer(nullptr, nullptr); }},
        {"DeleteContainer", [&] { return token->DeleteContainer(none); }},
        {"EnumContainer", [&] { return token->EnumContainer(0, result.receive()); }},
        {"DigestData",
         [&] { return token->DigestData(Text("MD5"), ByteArray("x"), result.receive()); }},
        {"GetDigestMethod", [&] { return token->GetDigestMethod(&text); }},
        {"GetSignAlgo", [&] { return token->GetSignAlgo(&text); }},
        {"GetAlgoList", [&] { return token->GetAlgoList(&text); }},
        {"GetKeyObjectClassName", [&] { return token->GetKeyObjectClassName(nullptr); }},
        {"GetCaLibPath", [&] { return token->GetCaLibPath(nullptr); }},
        {"GetCSPName", [&] { return token->GetCSPName(nullptr); }},
        {"VerifyDataByCert",
         [&] { return token->VerifyDataByCert(none, nullptr, none, nullptr, none); }},
        {"VerifyDataByPubKey",
         [&] { return token->VerifyDataByPubKey(none, nullptr, none, nullptr, none); }},
    };
    for (const auto& [name, call] : operations) {
        EXPECT_EQ(begunAndEnded(name), logged(call)) << name;
        SysFreeString(std::exchange(text, nullptr));
    }
}

TEST_F(TokenLogTest, OpenKeyAfterTheSlotsChangedLogsNoEndLine) {
    void* key = nullptr;
    const auto open = [&] { EXPECT_HR(S_OK, provider->OpenKey(0, &key)); };
    module->settings().slotCountWhenListed = 0;
    EXPECT_EQ(begunOnly("OpenKey"), logged(open));
    module->settings().slotCountWhenListed = 1;
    module->fail("C_GetSlotList", 2, CKR_BUFFER_TOO_SMALL);
    EXPECT_EQ(begunOnly("OpenKey"), logged(open));
    EXPECT_EQ(nullptr, key);
}

TEST_F(TokenLogTest, FailedOperationsLogNoEndLine) {
    module->fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED);
    module->fail("C_Login", 0, CKR_PIN_INCORRECT);
    BSTR text = nullptr;
    VARIANT none = {};
    const std::vector<std::pair<std::string, std::function<HRESULT()>>> operations = {
        {"GetLabel", [&] { return token->GetLabel(&text); }},
        {"GetLabel", [&] { return token->GetLabel(nullptr); }},
        {"GetTotalSize", [&] { return token->GetTotalSize(result.receive()); }},
        {"GetFreeSize", [&] { return token->GetFreeSize(nullptr); }},
        {"VerifyPIN", [&] { return token->VerifyPIN(Text("1234"), 0); }},
        {"VerifyPIN", [&] { return token->VerifyPIN(Text("1234"), 2); }},
        {"ModifyPIN", [&] { return token->ModifyPIN(Text("123"), Text("1234"), 0); }},
        {"GetContainerCount", [&] { return token->GetContainerCount(nullptr); }},
        {"EnumContainer", [&] { return token->EnumContainer(0, nullptr); }},
        {"OpenContainer", [&] { return token->OpenContainer(none, nullptr); }},
        {"GetCertData", [&] { return token->GetCertData(nullptr, result.receive()); }},
        {"DigestData",
         [&] { return token->DigestData(Text("md5"), ByteArray("x"), result.receive()); }},
        {"DigestData", [&] { return token->DigestData(Text("MD5"), none, result.receive()); }},
        {"GetDigestMethod", [&] { return token->GetDigestMethod(nullptr); }},
        {"GetSignAlgo", [&] { return token->GetSignAlgo(nullptr); }},
        {"GetAlgoList", [&] { return token->GetAlgoList(nullptr); }},
    };
    for (const auto& [name, call] : operations) {
        EXPECT_EQ(begunOnly(name), logged(call)) << name;
    }
}

TEST_F(TokenLogTest, ModifyPinLogsItsLogin) {
    EXPECT_EQ(begunAndEnded("ModifyPIN", begunAndEnded("VerifyPIN")),
              logged([&] { token->ModifyPIN(Text("1234"), Text("4321"), 0); }));
    EXPECT_EQ(begunOnly("ModifyPIN", begunOnly("VerifyPIN")),
              logged([&] { token->ModifyPIN(Text("9999"), Text("1234"), 0); }));
    module->fail("C_SetPIN", 1, CKR_PIN_LEN_RANGE);
    EXPECT_EQ(begunOnly("ModifyPIN", begunAndEnded("VerifyPIN")),
              logged([&] { token->ModifyPIN(Text("4321"), Text("1234"), 0); }));
}

TEST_F(TokenLogTest, ContainerOperationsLogOnTheTokenOnly) {
    module.addCertificate("a", "A");
    EXPECT_EQ(begunAndEnded("GetContainerCount",
                            {"[GetContainerCount] KeyObject_pkcs11::GetContainerCount ...."}),
              logged([&] { token->GetContainerCount(result.receive()); }));
    ComRef<IKeyContainer> container;
    ComRef<IKeyCertificate> certificate;
    const Text name("a");
    EXPECT_EQ(begunAndEnded("OpenContainer", addRef("KeyObject", 2)),
              logged([&] { token->OpenContainer(string(name), container.receive()); }));
    EXPECT_EQ(Lines{}, logged([&] { container->GetKeyCert(true, certificate.receive()); }));
    EXPECT_EQ(begunAndEnded("GetCertData"),
              logged([&] { token->GetCertData(certificate.get(), result.receive()); }));
    module->fail("C_FindObjectsInit", 0, CKR_DEVICE_REMOVED);
    module->fail("C_FindObjects", 0, CKR_DEVICE_REMOVED);
    EXPECT_EQ(begunAndEnded("GetCertData"),
              logged([&] { token->GetCertData(certificate.get(), result.receive()); }));
    EXPECT_EQ(Lines{}, logged([&] { certificate.reset(); }));
    EXPECT_EQ(release("KeyObject", 1), logged([&] { container.reset(); }));
    EXPECT_EQ(begunOnly("OpenContainer", addRef("KeyObject", 2) + release("KeyObject", 1)),
              logged([&] { token->OpenContainer(string(name), container.receive()); }));
}

TEST_F(TokenLogTest, LastReleaseOfTheTokenLogsItsDestruction) {
    logIn();
    const Lines expected = release("KeyObject", 0,
                                   begunAndEnded("FinalRelease", begunAndEnded("CloseKey")) +
                                       begunAndEnded("~KeyObject_pkcs11") +
                                       Lines{"[Release] [TokenProvider::Release] call...",
                                             "[Release] [TokenProvider::Release] count=1"});
    EXPECT_EQ(expected, logged([&] { token.reset(); }));
}

}  // namespace
}  // namespace zr::test
