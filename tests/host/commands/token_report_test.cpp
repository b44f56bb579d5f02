// The reports of list, info, login and pin change, to the last character.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

using TokenReportTest = CommandTest;

/// A list without a token says why.
/// @param line  the text after "zrkey: no token to list: ".
void expectNoToken(const CommandResult& result, const std::string& line) {
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_EQ("zrkey: no token to list: " + line + "\n", result.errors);
}

constexpr const char* kNotOpened =
    "the module does not open its tokens; disconnect the token and connect it again";

TEST_F(TokenReportTest, ListWritesALineForEachToken) {
    module->settings().slotCount = 2;
    module->settings().slotCountWhenListed = 2;
    expectOutput({"list"}, "0\tLabel\tSerial\tMaker\tModel\n1\tLabel\tSerial\tMaker\tModel\n");
    const std::string token = R"("label":"Label","serial":"Serial","manufacturer":"Maker",)"
                              R"("model":"Model"})";
    expectJson({"list"}, "list",
               R"("slots":2,"tokens":[{"index":0,)" + token + R"(,{"index":1,)" + token + "]");
}

TEST_F(TokenReportTest, ListReplacesControlCharacters) {
    CK_TOKEN_INFO& info = module->settings().tokenInfo;
    setText(info.label, "a\x1b");
    setText(info.serialNumber, "b\t");
    setText(info.manufacturerID, "c\n");
    setText(info.model, "d\x7f");
    expectOutput({"list"}, "0\ta?\tb?\tc?\td?\n");
}

TEST_F(TokenReportTest, ListWithoutAReaderSaysSo) {
    module->settings().slotCount = 0;
    module->settings().slotCountWhenListed = 0;
    const std::string line =
        "the module finds no reader; connect a reader or a token, and check that its service runs";
    expectNoToken(zrkey({"list"}), line);
    const CommandResult result = zrkey({"list", "--json"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(R"({"schema":1,"command":"list","result":{"name":"S_OK","hex":"0x00000000"},)"
              R"("slots":0,"tokens":[]})"
              "\n",
              result.output);
    EXPECT_EQ("zrkey: no token to list: " + line + "\n", result.errors);
}

TEST_F(TokenReportTest, ListWithAnEmptyReaderSaysSo) {
    module->settings().slotCount = 0;
    module->settings().slotCountWhenListed = 0;
    module->settings().emptySlotCount = 1;
    expectNoToken(zrkey({"list"}), "no reader contains a token; connect a token");
    expectFailure({"info"}, 4, "choose a token: no reader contains a token; connect a token");
}

TEST_F(TokenReportTest, ListWithATokenThatIsNotInitialisedSaysSo) {
    CK_TOKEN_INFO& info = module->settings().tokenInfo;
    setText(info.label, "");
    setText(info.serialNumber, "");
    expectNoToken(zrkey({"list"}),
                  "the token is not initialised; initialise it with the tool of its maker");
}

TEST_F(TokenReportTest, ListWithATokenThatDoesNotOpenSaysSo) {
    constexpr CK_FLAGS kTokenInitialised = 0x400;
    module->settings().tokenInfo.flags = kTokenInitialised;
    module->fail("C_OpenSession", 0, CKR_GENERAL_ERROR);
    expectNoToken(zrkey({"list"}), kNotOpened);
}

TEST_F(TokenReportTest, ListEndsWhenTheModuleReportsBillionsOfSlots) {
    module->settings().slotCount = 0x7FFFFFFF;
    expectNoToken(zrkey({"list"}), kNotOpened);
}

TEST_F(TokenReportTest, ListFailsWhenTheTokensCannotBeCounted) {
    module->fail("C_GetSlotList", 0, CKR_GENERAL_ERROR);
    expectFailure(
        {"list"}, 1,
        "count the tokens: the library returned E_FAIL (0x80004005); check that the reader "
        "is connected");
}

TEST_F(TokenReportTest, InfoShowsEveryField) {
    CK_TOKEN_INFO& info = module->settings().tokenInfo;
    info.ulTotalPublicMemory = 65536;
    info.ulFreePublicMemory = 4096;
    expectOutput({"info"},
                 "index:\t0\nlabel:\tLabel\nserial:\tSerial\nmanufacturer:\tMaker\nmodel:\tModel\n"
                 "totalSize:\t65536\nfreeSize:\t4096\nsignAlgorithms:\tSHA1WithRSA\n"
                 "digestMethod:\tMD5\n");
    expectJson({"info"}, "info",
               R"("index":0,"label":"Label","serial":"Serial","manufacturer":"Maker",)"
               R"("model":"Model","totalSize":65536,"freeSize":4096,)"
               R"("signAlgorithms":"SHA1WithRSA","digestMethod":"MD5")");
}

TEST_F(TokenReportTest, InfoMarksSizesThatTheTokenDoesNotReport) {
    CK_TOKEN_INFO& info = module->settings().tokenInfo;
    info.ulTotalPublicMemory = CK_UNAVAILABLE_INFORMATION;
    info.ulFreePublicMemory = CK_UNAVAILABLE_INFORMATION;
    EXPECT_NE(std::string::npos,
              zrkey({"info"}).output.find("\ntotalSize:\tnot reported\nfreeSize:\tnot reported\n"));
    expectJson({"info"}, "info",
               R"("index":0,"label":"Label","serial":"Serial","manufacturer":"Maker",)"
               R"("model":"Model","signAlgorithms":"SHA1WithRSA","digestMethod":"MD5")");
}

TEST_F(TokenReportTest, InfoOfARemovedTokenFails) {
    // After the four texts.
    module->fail("C_GetTokenInfo", 5, CKR_DEVICE_REMOVED);
    expectFailure(
        {"info"}, 1,
        "read the sizes of the token: the library returned E_FAIL (0x80004005); check that "
        "it is still connected");
}

TEST_F(TokenReportTest, LoginReportsTokenAndRole) {
    expectOutput(withPin({"login"}), "logged in to \"Label\" as user\n");
    expectJson(withPin({"login"}), "login", R"("label":"Label","role":"user")");
    setEnvironment("TEST_SO_PIN", module->settings().securityOfficerPin);
    const std::vector<std::string> officer = {"login", "--so", "--pin", "env:TEST_SO_PIN"};
    expectOutput(officer, "logged in to \"Label\" as security officer\n");
    expectJson(officer, "login", R"("label":"Label","role":"security officer")");
}

TEST_F(TokenReportTest, SecurityOfficerWithoutAPinIsWrongUsage) {
    expectFailure({"cert", "list", "--so"}, 2,
                  "log in as security officer: no PIN is given; give --pin");
}

TEST_F(TokenReportTest, PinChangeReportsTokenAndRole) {
    setEnvironment("TEST_NEW_PIN", "5678");
    const std::vector<std::string> change = {"pin", "change", "--new-pin", "env:TEST_NEW_PIN"};
    expectOutput(withPin(change), "changed the user PIN of \"Label\"\n");
    setEnvironment("TEST_PIN", "5678");
    expectJson(withPin(change), "pin change", R"("label":"Label","role":"user")");
}

TEST_F(TokenReportTest, PinsOfAWrongLengthAreRefusedWithoutALogin) {
    setEnvironment("TEST_NEW_PIN", "123");
    const std::vector<std::string> change = {"pin", "change", "--new-pin", "env:TEST_NEW_PIN"};
    expectFailure(
        withPin(change), 2,
        "change the PIN: the new PIN must be 4 to 8 bytes long; give a PIN of that length");
    setEnvironment("TEST_NEW_PIN", "5678");
    setEnvironment("TEST_PIN", "123456789");
    const std::string longer =
        "change the PIN: the old PIN is longer than 8 bytes, which the object model does not "
        "accept; "
        "change it with the tool of the token's issuer";
    expectFailure(withPin(change), 2,
                  longer + ", or let the security officer set a new one with zrkey pin unblock");
    std::vector<std::string> officer = withPin(change);
    officer.emplace_back("--so");
    expectFailure(officer, 2, longer);
    setEnvironment("TEST_PIN", "123");
    expectFailure(
        withPin(change), 2,
        "change the PIN: the old PIN must be 4 to 8 bytes long; give a PIN of that length");
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(TokenReportTest, PinsOfFourAndEightBytesAreAccepted) {
    for (const char* pin : {"4444", "88888888", "1234"}) {
        setEnvironment("TEST_NEW_PIN", pin);
        expectOutput(withPin({"pin", "change", "--new-pin", "env:TEST_NEW_PIN"}),
                     "changed the user PIN of \"Label\"\n");
        setEnvironment("TEST_PIN", pin);
    }
}

TEST_F(TokenReportTest, PinChangeRefusedAfterTheLoginFails) {
    setEnvironment("TEST_NEW_PIN", "5678");
    module->fail("C_SetPIN", 0, CKR_PIN_INVALID);
    expectFailure(
        withPin({"pin", "change", "--new-pin", "env:TEST_NEW_PIN"}), 1,
        "change the PIN of \"Label\": the library returned E_FAIL (0x80004005); the old PIN "
        "is correct; the token may not accept the new one");
}

}  // namespace
}  // namespace zr::test
