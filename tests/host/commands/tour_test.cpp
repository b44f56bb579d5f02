// The example script: what it prints, and how often it tries a PIN.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class TourTest : public CommandTest {
protected:
    CommandResult tour() const { return zrkey({"run", ZRKEY_EXAMPLES "/tour.js", module.path()}); }
    /// @param variable  that contains the PIN.
    CommandResult tourWithLogin(const std::string& variable) const {
        return zrkey(
            {"run", "--pin", "env:" + variable, ZRKEY_EXAMPLES "/tour.js", module.path(), "login"});
    }
    static std::string report(const std::string& login) {
        return "slots with a token: 1\nopened token 0\nserial number: Serial\n"
               "label:         Label\nmanufacturer:  Maker\nmodel:         Model\n"
               "total size:    65536 bytes\nfree size:     4096 bytes\n"
               "failing call:  VerifyPIN failed: E_INVALIDARG (0x80070057)\n"
               "login:         " +
               login + "\n";
    }
};

TEST_F(TourTest, WithoutAPinNoPinIsTried) {
    const CommandResult result = tour();
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ(report("none was asked for"), result.output);
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(TourTest, PinIsTriedOnce) {
    const CommandResult result = tourWithLogin("TEST_PIN");
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ(report("logged in"), result.output);
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(TourTest, RefusedPinIsNotTriedAgain) {
    EXPECT_EQ(1, tourWithLogin("TEST_WRONG_PIN").exitCode);
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(TourTest, WrongArgumentsShowTheUsage) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {module.path(), "1234"}}) {
        std::vector<std::string> words = {"run", ZRKEY_EXAMPLES "/tour.js"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const CommandResult result = zrkey(words);
        EXPECT_EQ(2, result.exitCode);
        EXPECT_EQ("", result.output);
        EXPECT_EQ("usage: zrkey run tour.js MODULE [login]\n", result.errors);
    }
}

TEST_F(TourTest, SizesThatTheTokenDoesNotReportAreMarked) {
    module->settings().tokenInfo.ulTotalPublicMemory = CK_UNAVAILABLE_INFORMATION;
    EXPECT_NE(std::string::npos, tour().output.find("total size:    not reported\n"));
}

}  // namespace
}  // namespace zr::test
