// The example script: what it prints, and how often it tries a PIN.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class TourTest : public CommandTest {
protected:
    CommandResult tour(const std::vector<std::string>& arguments = {}) const {
        std::vector<std::string> words = {"run", ZRKEY_EXAMPLES "/tour.js", module.path()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return zrkey(words);
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
    EXPECT_EQ(report("none, no PIN is given"), result.output);
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(TourTest, PinIsTriedOnce) {
    const CommandResult result = tour({"1234"});
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_EQ(report("logged in"), result.output);
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(TourTest, RefusedPinIsNotTriedAgain) {
    EXPECT_EQ(1, tour({"4321"}).exitCode);
    EXPECT_EQ(1u, module.count("C_Login"));
}

TEST_F(TourTest, SizesThatTheTokenDoesNotReportAreMarked) {
    module->settings().tokenInfo.ulTotalPublicMemory = CK_UNAVAILABLE_INFORMATION;
    EXPECT_NE(std::string::npos, tour().output.find("total size:    not reported\n"));
}

}  // namespace
}  // namespace zr::test
