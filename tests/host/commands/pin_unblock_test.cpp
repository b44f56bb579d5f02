// pin unblock: the limits of the token, the order of calls, and failures.
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

using Deeds = std::vector<std::string>;

constexpr const char* kAsked = "unblock the user PIN of \"Label\": ";
constexpr CK_FLAGS kOfficerPinLocked = 0x400000;

class PinUnblockTest : public CertificateCommandTest {
protected:
    PinUnblockTest() {
        setEnvironment("TEST_SO_PIN", "87654321");
        setEnvironment("TEST_NEW_PIN", "5678");
    }

    static std::vector<std::string> unblock(const std::string& pin = "env:TEST_SO_PIN") {
        return {"pin", "unblock", "--pin", pin, "--new-pin", "env:TEST_NEW_PIN"};
    }
};

TEST_F(PinUnblockTest, UserGetsTheNewPin) {
    expectOutput(unblock(), "unblocked the user PIN of \"Label\"\n");
    EXPECT_EQ((Deeds{"C_Login(1, 0, 87654321)", "C_InitPIN(2, 5678)"}), takeDeeds());
    expectJson(unblock(), "pin unblock", R"("label":"Label")");
}

TEST_F(PinUnblockTest, LengthOfTheTokenIsCheckedBeforeTheLogin) {
    module->settings().tokenInfo.ulMinPinLen = 6;
    module->settings().tokenInfo.ulMaxPinLen = 10;
    for (const char* pin : {"12345", "12345678901"}) {
        setEnvironment("TEST_NEW_PIN", pin);
        expectFailure(unblock(), 2,
                      std::string(kAsked) +
                          "the token takes a PIN of 6 to 10 bytes; give a new PIN of that length");
    }
    EXPECT_EQ(Deeds{}, takeDeeds());
    for (const char* pin : {"123456", "1234567890"}) {
        setEnvironment("TEST_NEW_PIN", pin);
        expectOutput(unblock(), "unblocked the user PIN of \"Label\"\n");
    }
}

TEST_F(PinUnblockTest, LimitsThatAreNoneAreNotChecked) {
    for (const CK_ULONG longest : {CK_ULONG{0}, CK_UNAVAILABLE_INFORMATION}) {
        module->settings().tokenInfo.ulMinPinLen = longest;
        module->settings().tokenInfo.ulMaxPinLen = longest;
        expectOutput(unblock(), "unblocked the user PIN of \"Label\"\n");
    }
}

TEST_F(PinUnblockTest, RefusedLoginOfTheOfficerIsNamed) {
    expectFailure(unblock("env:TEST_WRONG_PIN"), 5,
                  "log in to \"Label\" as security officer: the PIN is wrong, or the token could "
                  "not check it; retries are limited, so check the PIN before you try again");
    EXPECT_EQ(Deeds{"C_Login(1, 0, 97531)"}, takeDeeds());
    module->settings().tokenInfo.flags = kOfficerPinLocked;
    EXPECT_EQ(8, zrkey(unblock()).exitCode);
    EXPECT_EQ(Deeds{}, takeDeeds());
}

TEST_F(PinUnblockTest, FailedCallIsNamed) {
    module->fail("C_InitPIN", 0, CKR_PIN_LEN_RANGE);
    expectFailure(unblock(), 1,
                  std::string(kAsked) +
                      "the module's C_InitPIN returned CKR_PIN_LEN_RANGE "
                      "(0x000000A2); choose a PIN that the token accepts");
    module->fail("C_OpenSession", 2, CKR_DEVICE_REMOVED);
    expectFailure(unblock(), 1,
                  std::string(kAsked) +
                      "the module's C_OpenSession returned CKR_DEVICE_REMOVED "
                      "(0x00000032); the token was removed; connect it and try "
                      "again");
    EXPECT_EQ(0u, module->openSessions());
}

TEST_F(PinUnblockTest, TokenThatIsGoneIsNamed) {
    // After the four texts of the library; first for the lengths, then for the flags.
    module->fail("C_GetTokenInfo", 5, CKR_TOKEN_NOT_PRESENT);
    module->fail("C_GetTokenInfo", 6, CKR_TOKEN_NOT_PRESENT);
    expectFailure(unblock(), 1,
                  "log in to \"Label\" as security officer: the token was removed; connect it and "
                  "try again");
    EXPECT_EQ(Deeds{}, takeDeeds());
}

}  // namespace
}  // namespace zr::test
