// The report of a login that fails, to the last character: its cause by the flags of the token.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

constexpr CK_FLAGS kUserPinInitialised = 0x8;
constexpr CK_FLAGS kTokenInitialised = 0x400;
constexpr CK_FLAGS kUserPinCountLow = 0x10000;
constexpr CK_FLAGS kUserPinFinalTry = 0x20000;
constexpr CK_FLAGS kUserPinLocked = 0x40000;
constexpr CK_FLAGS kOfficerPinCountLow = 0x100000;
constexpr CK_FLAGS kOfficerPinFinalTry = 0x200000;
constexpr CK_FLAGS kOfficerPinLocked = 0x400000;

constexpr const char* kCheck = "retries are limited, so check the PIN before you try again";
constexpr const char* kUnlock = "the PIN is locked; ask the issuer of the token to unlock it";
constexpr const char* kRemoved = "the token was removed; connect it and try again";

class LoginReportTest : public CommandTest {
protected:
    /// What happens while the module is asked to log in.
    void duringLogin(void (*happening)(RecordingModule&)) {
        m_happening = happening;
        module->callBack(
            "C_Login",
            [](void* argument) {
                auto* test = static_cast<LoginReportTest*>(argument);
                test->m_happening(*test->module.operator->());
            },
            this);
    }
    static void expectRefusal(int exitCode, const std::string& cause) {
        expectFailure({"login", "--pin", "env:TEST_WRONG_PIN"}, exitCode,
                      "log in to \"Label\" as user: " + cause);
    }
    static void expectOfficerRefusal(int exitCode, const std::string& cause) {
        expectFailure({"login", "--so", "--pin", "env:TEST_WRONG_PIN"}, exitCode,
                      "log in to \"Label\" as security officer: " + cause);
    }
    void setFlags(CK_FLAGS flags) { module->settings().tokenInfo.flags = flags; }

private:
    void (*m_happening)(RecordingModule&) = nullptr;
};

TEST_F(LoginReportTest, WrongPinIsNamed) {
    setFlags(kTokenInitialised | kUserPinInitialised);
    duringLogin([](RecordingModule& it) { it.settings().tokenInfo.flags |= kUserPinCountLow; });
    expectRefusal(5, std::string("the PIN is wrong; ").append(kCheck));
    setFlags(0);
    duringLogin([](RecordingModule& it) { it.settings().tokenInfo.flags |= kOfficerPinCountLow; });
    expectOfficerRefusal(5, std::string("the PIN is wrong; ").append(kCheck));
}

TEST_F(LoginReportTest, RefusalOfATokenWithoutFlagsNamesBothCauses) {
    const std::string cause =
        std::string("the PIN is wrong, or the token could not check it; ").append(kCheck);
    expectRefusal(5, cause);
    const CommandResult result = zrkey({"login", "--json", "--pin", "env:TEST_WRONG_PIN"});
    EXPECT_EQ(R"({"schema":1,"command":"login","result":{"name":"E_FAIL","hex":"0x80004005"},)"
              R"("failure":{"exit":5,"asked":"log in to \"Label\" as user",)"
              R"("cause":"the PIN is wrong, or the token could not check it",)"
              R"("advice":"retries are limited, so check the PIN before you try again"}})"
              "\n",
              result.output);
    EXPECT_EQ("zrkey: cannot log in to \"Label\" as user: " + cause + "\n", result.errors);
    // The flags of the other PIN say nothing.
    setFlags(kOfficerPinLocked | kOfficerPinFinalTry | kOfficerPinCountLow);
    expectRefusal(5, cause);
    setFlags(kUserPinLocked | kUserPinFinalTry | kUserPinCountLow);
    expectOfficerRefusal(5, cause);
}

TEST_F(LoginReportTest, RefusalThatLeavesOneTryIsNamed) {
    const std::string cause =
        "the PIN is wrong, and one try is left; make sure of the PIN: another wrong one locks it";
    duringLogin([](RecordingModule& it) { it.settings().tokenInfo.flags = kUserPinFinalTry; });
    expectRefusal(5, cause);
    setFlags(0);
    duringLogin([](RecordingModule& it) { it.settings().tokenInfo.flags = kOfficerPinFinalTry; });
    expectOfficerRefusal(5, cause);
}

TEST_F(LoginReportTest, RefusalThatLocksThePinIsNamed) {
    duringLogin([](RecordingModule& it) { it.settings().tokenInfo.flags = kUserPinLocked; });
    expectRefusal(8, kUnlock);
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(LoginReportTest, LockedPinIsNotTried) {
    setFlags(kUserPinLocked);
    expectRefusal(8, kUnlock);
    setEnvironment("TEST_NEW_PIN", "5678");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"file", "create", "7"},
          {"cert", "list"},
          {"pin", "change", "--new-pin", "env:TEST_NEW_PIN"}}) {
        expectFailure(withPin(words), 8,
                      std::string("log in to \"Label\" as user: ").append(kUnlock));
    }
    setFlags(kOfficerPinLocked);
    expectOfficerRefusal(8, kUnlock);
    EXPECT_EQ(0u, module.count("C_Login"));
    expectOutput(withPin({"login"}), "logged in to \"Label\" as user\n");
}

TEST_F(LoginReportTest, PinThatIsNotInitialisedIsNamed) {
    setFlags(kTokenInitialised);
    expectRefusal(5, "the PIN is not initialised; ask the issuer of the token to set it");
    // It is tried all the same: the module may have forgotten the flag.
    expectOutput(withPin({"login"}), "logged in to \"Label\" as user\n");
}

TEST_F(LoginReportTest, TokenRemovedDuringTheLoginIsNamed) {
    duringLogin([](RecordingModule& it) { it.fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED); });
    expectRefusal(1, kRemoved);
    module->reset();
    setText(module->settings().tokenInfo.label, "Label");
    duringLogin([](RecordingModule& it) { it.settings().slotCount = 0; });
    expectRefusal(1, kRemoved);
}

TEST_F(LoginReportTest, TokenReplacedDuringTheLoginIsNamed) {
    duringLogin([](RecordingModule& it) {
        setText(it.settings().tokenInfo.serialNumber, "Other");
        it.settings().tokenInfo.flags = kUserPinLocked;
    });
    expectRefusal(1, kRemoved);
}

TEST_F(LoginReportTest, TokenRemovedBeforeTheLoginIsNotTried) {
    // After the four texts.
    module->fail("C_GetTokenInfo", 5, CKR_TOKEN_NOT_PRESENT);
    expectRefusal(1, kRemoved);
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(LoginReportTest, TokenWithoutInformationIsTried) {
    module->fail("C_GetTokenInfo", 5, CKR_GENERAL_ERROR);
    expectOutput(withPin({"login"}), "logged in to \"Label\" as user\n");
    duringLogin([](RecordingModule& it) { it.fail("C_GetSlotList", 0, CKR_GENERAL_ERROR); });
    expectRefusal(
        5, std::string("the PIN is wrong, or the token could not check it; ").append(kCheck));
}

TEST_F(LoginReportTest, TextsThatAreNotUtf8DoNotHideTheState) {
    setText(module->settings().tokenInfo.label, "\xFF");
    setFlags(kUserPinLocked);
    EXPECT_EQ(8, zrkey(withPin({"login"})).exitCode);
}

TEST_F(LoginReportTest, LastTryIsUsedWithTheOption) {
    setFlags(kUserPinFinalTry);
    std::vector<std::string> login = withPin({"login", "--last-try"});
    expectOutput(login, "logged in to \"Label\" as user\n");
    // A wrong PIN locks it.
    duringLogin([](RecordingModule& it) { it.settings().tokenInfo.flags = kUserPinLocked; });
    expectFailure({"login", "--last-try", "--pin", "env:TEST_WRONG_PIN"}, 8,
                  std::string("log in to \"Label\" as user: ").append(kUnlock));
}

}  // namespace
}  // namespace zr::test
