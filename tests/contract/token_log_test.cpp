// What the operations of a token write to the log: information, PINs, containers.
#include "tests/contract/token_log.h"

namespace zr::test {
namespace {

TEST_F(TokenLogTest, OperationsTellTheirNames) {
    BSTR text = nullptr;
    VARIANT none;
    VariantInit(&none);
    const std::vector<std::pair<std::string, std::function<HRESULT()>>> operations = {
        {"GetSerialNumber", [&] { return token->GetSerialNumber(&text); }},
        {"GetLabel", [&] { return token->GetLabel(&text); }},
        {"GetManufacturerID", [&] { return token->GetManufacturerID(&text); }},
        {"GetModelID", [&] { return token->GetModelID(&text); }},
        {"GetTotalSize", [&] { return token->GetTotalSize(&result); }},
        {"GetFreeSize", [&] { return token->GetFreeSize(&result); }},
        {"SetLabel", [&] { return token->SetLabel(&text, &result); }},
        {"VerifyPIN", [&] { return token->VerifyPIN(Text("1234"), 0); }},
        {"UnlockPIN", [&] { return token->UnlockPIN(nullptr, nullptr); }},
        {"GetMaxRetryCount", [&] { return token->GetMaxRetryCount(0, &result); }},
        {"GetRemainRetryCount", [&] { return token->GetRemainRetryCount(0, &result); }},
        {"IsDefaultPIN", [&] { return token->IsDefaultPIN(0, &result); }},
        {"Lock", [&] { return token->Lock(&result); }},
        {"Unlock", [&] { return token->Unlock(&result); }},
        {"EnumFiles", [&] { return token->EnumFiles(&result); }},
        {"CreateContainer", [&] { return token->CreateContainer(nullptr, nullptr); }},
        {"DeleteContainer", [&] { return token->DeleteContainer(none); }},
        {"EnumContainer", [&] { return token->EnumContainer(0, &result); }},
        {"DigestData", [&] { return token->DigestData(Text("MD5"), Bytes("x"), &result); }},
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
        EXPECT_EQ(whole(name), told(call)) << name;
        SysFreeString(std::exchange(text, nullptr));
        VariantClear(&result);
    }
}

TEST_F(TokenLogTest, AnOpeningThatFindsOtherSlotsHasNoEndLine) {
    void* key = nullptr;
    const auto open = [&] { EXPECT_HR(S_OK, provider->OpenKey(0, &key)); };
    module->settings().slotCountWhenListed = 0;
    EXPECT_EQ(broken("OpenKey"), told(open));
    module->settings().slotCountWhenListed = 1;
    module->fail("C_GetSlotList", 2, CKR_BUFFER_TOO_SMALL);
    EXPECT_EQ(broken("OpenKey"), told(open));
    EXPECT_EQ(nullptr, key);
}

TEST_F(TokenLogTest, AnEarlyFailureHasNoEndLine) {
    module->fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED);
    module->fail("C_Login", 0, CKR_PIN_INCORRECT);
    BSTR text = nullptr;
    VARIANT none;
    VariantInit(&none);
    const std::vector<std::pair<std::string, std::function<HRESULT()>>> operations = {
        {"GetLabel", [&] { return token->GetLabel(&text); }},
        {"GetLabel", [&] { return token->GetLabel(nullptr); }},
        {"GetTotalSize", [&] { return token->GetTotalSize(&result); }},
        {"GetFreeSize", [&] { return token->GetFreeSize(nullptr); }},
        {"VerifyPIN", [&] { return token->VerifyPIN(Text("1234"), 0); }},
        {"VerifyPIN", [&] { return token->VerifyPIN(Text("1234"), 2); }},
        {"ModifyPIN", [&] { return token->ModifyPIN(Text("123"), Text("1234"), 0); }},
        {"GetContainerCount", [&] { return token->GetContainerCount(nullptr); }},
        {"EnumContainer", [&] { return token->EnumContainer(0, nullptr); }},
        {"OpenContainer", [&] { return token->OpenContainer(none, nullptr); }},
        {"GetCertData", [&] { return token->GetCertData(nullptr, &result); }},
        {"DigestData", [&] { return token->DigestData(Text("md5"), Bytes("x"), &result); }},
        {"DigestData", [&] { return token->DigestData(Text("MD5"), none, &result); }},
        {"GetDigestMethod", [&] { return token->GetDigestMethod(nullptr); }},
        {"GetSignAlgo", [&] { return token->GetSignAlgo(nullptr); }},
        {"GetAlgoList", [&] { return token->GetAlgoList(nullptr); }},
    };
    for (const auto& [name, call] : operations) {
        EXPECT_EQ(broken(name), told(call)) << name;
    }
}

TEST_F(TokenLogTest, AChangeOfPinTellsItsLogin) {
    EXPECT_EQ(whole("ModifyPIN", whole("VerifyPIN")),
              told([&] { token->ModifyPIN(Text("1234"), Text("4321"), 0); }));
    EXPECT_EQ(broken("ModifyPIN", broken("VerifyPIN")),
              told([&] { token->ModifyPIN(Text("9999"), Text("1234"), 0); }));
    module->fail("C_SetPIN", 1, CKR_PIN_LEN_RANGE);
    EXPECT_EQ(broken("ModifyPIN", whole("VerifyPIN")),
              told([&] { token->ModifyPIN(Text("4321"), Text("1234"), 0); }));
}

TEST_F(TokenLogTest, ContainersTellTheirOperationsAlone) {
    module.addCertificate("a", "A");
    EXPECT_EQ(whole("GetContainerCount",
                    {"[GetContainerCount] KeyObject_pkcs11::GetContainerCount ...."}),
              told([&] { token->GetContainerCount(&result); }));
    IKeyContainer* container = nullptr;
    IKeyCertificate* certificate = nullptr;
    const Text name("a");
    EXPECT_EQ(whole("OpenContainer", addRef("KeyObject", 2)), told([&] {
                  token->OpenContainer(string(name), reinterpret_cast<void**>(&container));
              }));
    EXPECT_EQ(Lines{},
              told([&] { container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)); }));
    EXPECT_EQ(whole("GetCertData"), told([&] { token->GetCertData(certificate, &result); }));
    VariantClear(&result);
    module->fail("C_FindObjectsInit", 0, CKR_DEVICE_REMOVED);
    module->fail("C_FindObjects", 0, CKR_DEVICE_REMOVED);
    EXPECT_EQ(whole("GetCertData"), told([&] { token->GetCertData(certificate, &result); }));
    EXPECT_EQ(Lines{}, told([&] { certificate->Release(); }));
    EXPECT_EQ(release("KeyObject", 1), told([&] { container->Release(); }));
    EXPECT_EQ(broken("OpenContainer", addRef("KeyObject", 2) + release("KeyObject", 1)), told([&] {
                  token->OpenContainer(string(name), reinterpret_cast<void**>(&container));
              }));
}

TEST_F(TokenLogTest, ATokenTellsItsEnd) {
    logIn();
    const Lines expected =
        release("KeyObject", 0,
                whole("FinalRelease", whole("CloseKey")) + whole("~KeyObject_pkcs11") +
                    Lines{"[Release] [TokenProvider::Release] call...",
                          "[Release] [TokenProvider::Release] count=1"});
    EXPECT_EQ(expected, told([&] { token->Release(); }));
    provider->OpenKey(0, reinterpret_cast<void**>(&token));
}

}  // namespace
}  // namespace zr::test
