// zrkey list, info, login and pin change on a real token, and what every command has in common.
#include "tests/host/command_token_test.h"

namespace zr::test {
namespace {

void expectNoPin(const CommandResult& result) {
    for (const char* pin : {"1234", "97531", "87654321"}) {
        EXPECT_EQ(std::string::npos, (result.output + result.errors).find(pin)) << pin;
    }
}

TEST_F(CommandTokenTest, ListShowsTheTokenWithoutTheEmptySlot) {
    const CommandResult result = zrkey({"list"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(1, std::count(result.output.begin(), result.output.end(), '\n'));
    EXPECT_NE(std::string::npos, result.output.find("\tZRKey Test\t")) << result.output;
    EXPECT_EQ("", result.errors);
}

TEST_F(CommandTokenTest, JsonIsOneObjectWithASchema) {
    const CommandResult result = zrkey({"list", "--json"});
    EXPECT_EQ(0u,
              result.output.find("{\"schema\":1,\"command\":\"list\",\"result\":{\"name\":\"S_OK\","
                                 "\"hex\":\"0x00000000\"},\"slots\":2,\"tokens\":[{\"index\":"))
        << result.output;
    EXPECT_EQ(result.output.size() - 4, result.output.find("}]}\n"));
}

TEST_F(CommandTokenTest, InfoShowsTheTokenChosenByItsLabel) {
    const CommandResult result = zrkey({"info", "--label", "ZRKey Test"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_NE(std::string::npos, result.output.find("\nlabel:\tZRKey Test\n"));
    EXPECT_NE(std::string::npos, result.output.find("\nsignAlgorithms:\tSHA1WithRSA\n"));
    EXPECT_NE(std::string::npos, result.output.find("\ntotalSize:\tnot reported\n"));
}

TEST_F(CommandTokenTest, ChoiceOfAMissingTokenFails) {
    expectFailure(zrkey({"info", "--label", "Other"}), 4, "the tokens are: ");
    expectFailure(zrkey({"info", "--serial", "0"}), 4, "serial number \"0\"");
    expectFailure(zrkey({"info", "--index", "2"}), 4, "index 2");
}

TEST_F(CommandTokenTest, TwoChoicesAreWrongUsage) {
    expectFailure(zrkey({"info", "--index", "0", "--label", "ZRKey Test"}), 2, "--index");
}

TEST_F(CommandTokenTest, LoginAcceptsTheRightPin) {
    const CommandResult result = zrkeyLoggedIn({"login"});
    expectOutput(result, "logged in to \"ZRKey Test\" as user\n");
    expectNoPin(result);
}

TEST_F(CommandTokenTest, LoginReadsThePinFromFileAndStandardInput) {
    writeFile("pin.txt", "1234\r\n");
    EXPECT_EQ(0, zrkey({"login", "--pin", "file:pin.txt"}).exitCode);
    EXPECT_EQ(0, zrkey({"login", "--pin", "-"}, "1234\n").exitCode);
    EXPECT_EQ(0, zrkey({"login", "--pin", "fd:0"}, "1234").exitCode);
}

TEST_F(CommandTokenTest, LoginAsSecurityOfficerSucceeds) {
    expectOutput(zrkey({"login", "--so", "--pin", "env:TEST_SO_PIN"}),
                 "logged in to \"ZRKey Test\" as security officer\n");
}

TEST_F(CommandTokenTest, RefusedLoginSaysThatRetriesAreLimited) {
    const CommandResult result = zrkey({"login", "--pin", "env:TEST_WRONG_PIN"});
    expectFailure(result, 5, "the PIN is wrong; retries are limited");
    expectNoPin(result);
}

TEST_F(CommandTokenTest, FailureInJsonIsOnBothStreams) {
    const CommandResult result = zrkey({"login", "--json", "--pin", "env:TEST_WRONG_PIN"});
    EXPECT_EQ(5, result.exitCode);
    EXPECT_EQ(0u, result.output.find("{\"schema\":1,\"command\":\"login\",\"result\":{\"name\":\"E_"
                                     "FAIL\",\"hex\":\"0x80004005\"},\"failure\":{\"exit\":5,"))
        << result.output;
    EXPECT_EQ(0u, result.errors.find("zrkey: cannot log in")) << result.errors;
    expectNoPin(result);
}

TEST_F(CommandTokenTest, BarePinIsWrongUsageAndNotRepeated) {
    const CommandResult result = zrkey({"login", "--pin", "97531"});
    expectFailure(result, 2, "env:NAME");
    expectNoPin(result);
}

TEST_F(CommandTokenTest, LoginWithoutTerminalAndSourceIsWrongUsage) {
    expectFailure(zrkey({"login"}), 2, "there is no terminal");
    expectFailure(zrkeyLoggedIn({"pin", "change"}), 2, "there is no terminal");
    const CommandResult script = zrkey({"run", "-e", "readPin()"});
    EXPECT_EQ(1, script.exitCode);
    EXPECT_EQ("command line:1: readPin failed: there is no terminal\n", script.errors);
}

TEST_F(CommandTokenTest, NoConfigurationFileIsNeeded) {
    std::filesystem::remove("config.xml");
    const CommandResult result = zrkey({"info"});
    EXPECT_EQ(0, result.exitCode) << result.errors;
    EXPECT_NE(std::string::npos,
              result.output.find("signAlgorithms:\tSHA1WithRSA\ndigestMethod:\tMD5\n"))
        << result.output;
}

TEST_F(CommandTokenTest, ConfigurationWithoutADriverIsNamed) {
    writeFile("config.xml", "<other/>");
    expectFailure(zrkey({"list"}), 3, "the module was loaded, but config.xml");
}

TEST_F(CommandTokenTest, MissingModuleIsNamed) {
    expectFailure(zrkey({"list", "--module", "no/module.so"}), 3, "No such file or directory");
    expectFailure(zrkey({"list", "--module", "config.xml"}), 3, "check that the module is whole");
    expectFailure(zrkey({"list", "--workdir", "nowhere"}), 3, "cannot change to the folder");
}

TEST_F(CommandTokenTest, RelativeModulePathStartsAtTheCallersFolder) {
    std::filesystem::create_directory("elsewhere");
    std::filesystem::rename("config.xml", "elsewhere/config.xml");
    const std::string module = relativePath(fromEnvironment("ZRKEY_TEST_MODULE").c_str());
    EXPECT_EQ(0, zrkey({"list", "--module", module, "--workdir", "elsewhere"}).exitCode);
}

TEST_F(CommandTokenTest, PinChangeWorksAndCanBeReversed) {
    expectOutput(zrkey({"pin", "change", "--pin", "-", "--new-pin", "-"}, "1234\n56789012\n"),
                 "changed the user PIN of \"ZRKey Test\"\n");
    EXPECT_EQ(5, zrkeyLoggedIn({"login"}).exitCode);
    setEnvironment("TEST_NEW_PIN", "1234");
    EXPECT_EQ(0, zrkey({"pin", "change", "--pin", "-", "--new-pin", "env:TEST_NEW_PIN"}, "56789012")
                     .exitCode);
    EXPECT_EQ(0, zrkeyLoggedIn({"login"}).exitCode);
}

TEST_F(CommandTokenTest, PinChangeWithThreeOrNineBytesIsRefused) {
    for (const char* pin : {"123", "123456789"}) {
        expectFailure(zrkeyLoggedIn({"pin", "change", "--new-pin", "-"}, pin), 2,
                      "must be 4 to 8 bytes long");
    }
    EXPECT_EQ(0, zrkeyLoggedIn({"login"}).exitCode);
}

TEST_F(CommandTokenTest, PinChangeWithTheWrongOldPinIsReportedAsARefusedLogin) {
    expectFailure(zrkey({"pin", "change", "--pin", "env:TEST_WRONG_PIN", "--new-pin", "-"}, "4321"),
                  5, "retries are limited");
}

}  // namespace
}  // namespace zr::test
