// Module paths and the choice of a token, over the recording module.
#include "host/token/module_loading.h"
#include "host/token/prepared_load.h"
#include "host/token/token_session.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

using host::loadablePath;

/// The exit code of the Failure that body throws; 0 when it throws none.
template <class Body>
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
        host::replaceModulePlaces(host::ModulePlaces());
    }
    ~TokenChoiceTest() override { host::replaceModulePlaces(std::nullopt); }

    /// As the library read them from the configuration.
    std::string signAlgorithms() const {
        const host::TokenSession session(options);
        Text text;
        EXPECT_HR(S_OK, session->GetSignAlgo(text.receive()));
        return text.utf8();
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

    ConfigurationFolders configurations{folder.root()};
    host::TokenOptions options;
    host::PinOptions pinOptions;
};

TEST_F(TokenChoiceTest, OnlyTokenNeedsNoChoice) {
    setToken("one", "0001");
    const host::TokenSession session(options);
    EXPECT_EQ("one", session.row().label);
    EXPECT_EQ("0001", session.row().serial);
}

TEST_F(TokenChoiceTest, SessionEndClosesTheTokenThenUnloadsTheModule) {
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

TEST_F(TokenChoiceTest, LabelAndSerialNumberMatchAsAWhole) {
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

TEST_F(TokenChoiceTest, SlotWithoutLabelAndSerialNumberIsLeftOut) {
    setToken("", "");
    EXPECT_EQ(host::kExitNotFound, open());
    options.choice.index = 0;
    EXPECT_EQ(host::kExitNotFound, open());
}

TEST_F(TokenChoiceTest, BlankSlotWithZerosForASerialNumberIsLeftOut) {
    setToken("", "0000000000000000");
    EXPECT_EQ(host::kExitNotFound, open());
    setToken("one", "0000000000000000");
    EXPECT_EQ(0, open());
    setToken("", "0000000000000001");
    EXPECT_EQ(0, open());
}

TEST_F(TokenChoiceTest, SlotThatDoesNotOpenIsLeftOut) {
    module->fail("C_OpenSession", 0, CKR_TOKEN_NOT_PRESENT);
    EXPECT_EQ(host::kExitNotFound, open());
}

TEST_F(TokenChoiceTest, MissingModuleIsWrongUsage) {
    options.module.path.clear();
    EXPECT_EQ(host::kExitUsage, open());
}

TEST_F(TokenChoiceTest, VariableNamesTheModule) {
    setEnvironment("ZRKEY_MODULE", options.module.path);
    options.module.path.clear();
    EXPECT_EQ(0, open());
    setEnvironment("ZRKEY_MODULE", "");
}

TEST_F(TokenChoiceTest, AbsoluteModuleLoadsFromAnotherWorkFolder) {
    options.module.path = std::filesystem::absolute(options.module.path).string();
    options.module.workFolder = folder.work().string();
    std::filesystem::create_directory("other");
    std::filesystem::current_path("other");
    EXPECT_EQ("RSA", signAlgorithms());
    EXPECT_EQ("other", std::filesystem::current_path().filename());
    // Without its configuration there is the built-in one.
    options.module.workFolder.clear();
    EXPECT_EQ("SHA1WithRSA", signAlgorithms());
}

TEST_F(TokenChoiceTest, RefusedPinIsTriedOnce) {
    setPin("9999");
    host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
    const host::TokenSession session(options);
    EXPECT_EQ(host::kExitLoginRefused, exitCodeOf([&] { session.login(pin); }));
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(TokenChoiceTest, SecurityOfficerLogsInWithItsType) {
    setPin(module->settings().securityOfficerPin);
    pinOptions.securityOfficer = true;
    host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
    const host::TokenSession session(options);
    EXPECT_TRUE(session.login(pin));
    EXPECT_EQ("security officer", pin.role());
}

TEST_F(TokenChoiceTest, LoginWithoutASourceDoesNothing) {
    host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
    const host::TokenSession session(options);
    EXPECT_FALSE(session.login(pin));
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(TokenChoiceTest, SecurityOfficerWithoutASourceIsWrongUsage) {
    pinOptions.securityOfficer = true;
    EXPECT_EQ(host::kExitUsage, exitCodeOf([&] {
                  host::PinEntry pin(pinOptions, host::PinEntry::Need::kOnRequest);
              }));
}

TEST(LoadablePathTest, PathLeadsFromTheFolderToTheModule) {
    const std::filesystem::path root = std::filesystem::current_path().root_path();
    EXPECT_EQ("../../usr/lib/module.so",
              loadablePath(root / "usr/lib/module.so", root / "home/user").generic_string());
    EXPECT_EQ("module.so", loadablePath(root / "a/../b/./module.so", root / "b").generic_string());
    EXPECT_EQ("usr/module.so", loadablePath(root / "usr/module.so", root).generic_string());
}

TEST(LoadablePathTest, PathToAnotherDriveClimbsOutOfTheFolder) {
    // The roots differ on both targets, because one path has no root.
    EXPECT_EQ("../../other/module.so",
              loadablePath("other/module.so", std::filesystem::current_path().root_path() / "work")
                  .generic_string()
                  .substr(std::filesystem::current_path().has_root_name() ? 3 : 0));
}

}  // namespace
}  // namespace zr::test
