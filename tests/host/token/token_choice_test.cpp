// Module paths and the choice of a token, over the recording module.
#include "module_loading.h"
#include "tests/host/command_test.h"
#include "token_session.h"

namespace zr::test {
namespace {

using host::loadablePath;

/// What a choice throws, as exit code; 0 for none.
template <typename Body>
int exitCodeOf(Body body) {
    try {
        body();
    } catch (const host::Failure& failure) {
        return failure.exitCode;
    }
    return 0;
}

class TokenChoiceTest : public ModuleTest {
protected:
    TokenChoiceTest() {
        options.module.path = module.path();
        setEnvironment("ZRKEY_MODULE", "");
    }

    void setToken(const std::string& label, const std::string& serial) {
        CK_TOKEN_INFO& info = module->settings().tokenInfo;
        setText(info.label, label);
        setText(info.serialNumber, serial);
    }
    int open() {
        return exitCodeOf([&] { host::TokenSession session(options); });
    }
    void setPin(const std::string& pin) {
        folder.write("pin.txt", pin);
        pinOptions.source = host::parsePinSource("file:pin.txt");
    }

    host::TokenOptions options;
    host::PinOptions pinOptions;
};

TEST_F(TokenChoiceTest, TheOneTokenNeedsNoChoice) {
    setToken("one", "0001");
    const host::TokenSession session(options);
    EXPECT_EQ("one", session.row().label);
    EXPECT_EQ("0001", session.row().serial);
}

TEST_F(TokenChoiceTest, TheModuleIsUnloadedAfterTheTokenIsClosed) {
    EXPECT_EQ(0, open());
    EXPECT_EQ(0u, module->openSessions());
    const Lines calls = module.takeCalls();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ("C_Finalize(null)", calls.back());
}

TEST_F(TokenChoiceTest, SeveralTokensNeedAChoice) {
    module->settings().slotCount = 2;
    module->settings().slotCountWhenListed = 2;
    setToken("both", "0001");
    EXPECT_EQ(host::kExitNotFound, open());
    options.choice.label = "both";
    EXPECT_EQ(host::kExitNotFound, open());
    options.choice = {};
    options.choice.index = 1;
    EXPECT_EQ(0, open());
}

TEST_F(TokenChoiceTest, LabelAndSerialNumberMustMatchWhole) {
    setToken("one", "0001");
    options.choice.label = "on";
    EXPECT_EQ(host::kExitNotFound, open());
    options.choice.label = "one";
    EXPECT_EQ(0, open());
    options.choice = {};
    options.choice.serial = "0002";
    EXPECT_EQ(host::kExitNotFound, open());
    options.choice.serial = "0001";
    EXPECT_EQ(0, open());
}

TEST_F(TokenChoiceTest, ASlotWithoutLabelAndSerialNumberIsNoToken) {
    setToken("", "");
    EXPECT_EQ(host::kExitNotFound, open());
    options.choice.index = 0;
    EXPECT_EQ(host::kExitNotFound, open());
}

TEST_F(TokenChoiceTest, ASlotThatDoesNotOpenIsNoToken) {
    module->fail("C_OpenSession", 0, CKR_TOKEN_NOT_PRESENT);
    EXPECT_EQ(host::kExitNotFound, open());
}

TEST_F(TokenChoiceTest, WithoutAModuleUsageIsWrong) {
    options.module.path.clear();
    EXPECT_EQ(host::kExitUsage, open());
}

TEST_F(TokenChoiceTest, TheVariableNamesTheModule) {
    setEnvironment("ZRKEY_MODULE", options.module.path);
    options.module.path.clear();
    EXPECT_EQ(0, open());
    setEnvironment("ZRKEY_MODULE", "");
}

TEST_F(TokenChoiceTest, AnAbsoluteModuleAndAnotherWorkFolderAreFine) {
    options.module.path = std::filesystem::absolute(options.module.path).string();
    options.module.workFolder = folder.work().string();
    std::filesystem::create_directory("other");
    std::filesystem::current_path("other");
    EXPECT_EQ(0, open());
    EXPECT_EQ("other", std::filesystem::current_path().filename());
    options.module.workFolder.clear();
    EXPECT_EQ(host::kExitModule, open());
}

TEST_F(TokenChoiceTest, ARefusedPinIsTriedOnce) {
    setPin("9999");
    host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
    const host::TokenSession session(options);
    EXPECT_EQ(host::kExitLoginRefused, exitCodeOf([&] { session.login(pin); }));
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(TokenChoiceTest, TheSecurityOfficerLogsInAsSuch) {
    setPin(module->settings().securityOfficerPin);
    pinOptions.securityOfficer = true;
    host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
    const host::TokenSession session(options);
    EXPECT_TRUE(session.login(pin));
    EXPECT_EQ("security officer", pin.role());
}

TEST_F(TokenChoiceTest, WithoutASourceThereIsNoLogin) {
    host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
    const host::TokenSession session(options);
    EXPECT_FALSE(session.login(pin));
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(TokenChoiceTest, TheSecurityOfficerWithoutASourceIsWrongUsage) {
    pinOptions.securityOfficer = true;
    EXPECT_EQ(host::kExitUsage, exitCodeOf([&] {
                  host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
              }));
}

TEST(LoadablePathTest, ItLeadsFromTheFolderToTheModule) {
    const std::filesystem::path root = std::filesystem::current_path().root_path();
    EXPECT_EQ("../../usr/lib/module.so",
              loadablePath(root / "usr/lib/module.so", root / "home/user").generic_string());
    EXPECT_EQ("module.so", loadablePath(root / "a/../b/./module.so", root / "b").generic_string());
    EXPECT_EQ("usr/module.so", loadablePath(root / "usr/module.so", root).generic_string());
}

TEST(LoadablePathTest, AnotherDriveIsReachedByLeavingAllOfTheFolder) {
    // Roots that differ on both targets: one of the paths has none.
    EXPECT_EQ("../../other/module.so",
              loadablePath("other/module.so", std::filesystem::current_path().root_path() / "work")
                  .generic_string()
                  .substr(std::filesystem::current_path().has_root_name() ? 3 : 0));
}

}  // namespace
}  // namespace zr::test
