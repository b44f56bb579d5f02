// zrkey doctor: each stage that can fail, by the recording module.
#include <algorithm>

#include "host/system/shared_library.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class DoctorTest : public CommandTest {
protected:
    DoctorTest() {
        module->settings().tokenInfo.flags = kTokenInitialised | kUserPinSet;
        fs::remove("config.xml");
    }

    static constexpr CK_FLAGS kUserPinSet = 0x8;
    static constexpr CK_FLAGS kTokenInitialised = 0x400;
    static constexpr CK_FLAGS kFewTries = 0x10000;
    static constexpr CK_FLAGS kLastTry = 0x20000;
    static constexpr CK_FLAGS kLocked = 0x40000;

    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
    /// Expects a line, and the exit code.
    static void expectLine(const std::string& line, int exitCode,
                           std::vector<std::string> options = {}) {
        options.insert(options.begin(), "doctor");
        const CommandResult result = zrkey(options);
        EXPECT_EQ(exitCode, result.exitCode) << result.output;
        EXPECT_TRUE(has("\n" + result.output, "\n" + line + "\n")) << line << '\n' << result.output;
        EXPECT_EQ("", result.errors);
        const std::string end = exitCode == 0
                                    ? "ok\tlogin\ta login could work\n"
                                    : "failed\tlogin\ta login cannot work; correct what failed "
                                      "above\n";
        EXPECT_TRUE(result.output.ends_with(end)) << result.output;
    }
    /// The names of the checks in a report.
    static Lines checksIn(const std::string& output) {
        Lines names;
        for (std::size_t begin = 0; begin < output.size(); begin = output.find('\n', begin) + 1) {
            const std::size_t tab = output.find('\t', begin) + 1;
            names.push_back(output.substr(tab, output.find('\t', tab) - tab));
        }
        return names;
    }
    static std::string absolute(const std::string& path) {
        return fs::absolute(path).lexically_normal().generic_string();
    }
};

TEST_F(DoctorTest, EveryCheckIsMadeInOrderWithoutALogin) {
    const CommandResult result = zrkey({"doctor"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ((Lines{"command", "library", "automation", "module", "file", "platform", "loader",
                     "functions", "C_Initialize", "version", "configuration", "Load", "readers",
                     "token 0", "login"}),
              checksIn(result.output));
    EXPECT_FALSE(has(result.output, "warning")) << result.output;
    EXPECT_EQ(0u, module.count("C_Login"));
    EXPECT_EQ(0u, module.count("C_OpenSession"));
    // Once by itself, once by the library.
    EXPECT_EQ(2u, module.count("C_Initialize"));
    EXPECT_EQ(2u, module.count("C_Finalize"));
}

TEST_F(DoctorTest, VersionsAreShown) {
    expectLine("ok\tcommand\t" ZRKEY_VERSION, 0);
    expectLine("ok\tversion\tModule Maker, Recording Module, 1.2, Cryptoki 2.40", 0);
    std::string output = zrkey({"doctor"}).output;
    // On Windows the file itself says it.
    const std::string library = host::ownPlatform() == "Linux x86-64"
                                    ? "\nok\tlibrary\t/"
                                    : "\nok\tlibrary\t" ZRKEY_VERSION ".0, ";
    EXPECT_TRUE(has(output, library)) << output;
    // Windows writes the name in letters of its own choice.
    std::transform(output.begin(), output.end(), output.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    EXPECT_TRUE(
        has(output, host::ownPlatform() == "Linux x86-64" ? "libzrautomation.so" : "oleaut32.dll"))
        << output;
}

TEST_F(DoctorTest, ModuleIsNamedWithItsOrigin) {
    expectLine("ok\tmodule\t" + module.path() + ", from ZRKEY_MODULE", 0);
    setEnvironment("ZRKEY_MODULE", "");
    expectLine("ok\tmodule\t" + module.path() + ", from --module", 0, {"--module", module.path()});
    expectLine("failed\tmodule\tno module is named; give --module PATH or set ZRKEY_MODULE", 2);
}

TEST_F(DoctorTest, BlankTokenIsNoToken) {
    setText(module->settings().tokenInfo.label, "");
    setText(module->settings().tokenInfo.serialNumber, "0000000000000000");
    expectLine(
        "warning\ttoken 0\tit is not initialised; initialise it with the tool of its maker, "
        "if it is to be used",
        4);
}

TEST_F(DoctorTest, MissingFileIsFound) {
    expectLine("failed\tfile\tNo such file or directory; check --module", 3,
               {"--module", "missing.so"});
    // The configuration is checked all the same, and nothing that needs the module.
    const Lines checks = checksIn(zrkey({"doctor", "--module", "missing.so"}).output);
    EXPECT_EQ(
        (Lines{"command", "library", "automation", "module", "file", "configuration", "login"}),
        checks);
}

TEST_F(DoctorTest, FolderIsFound) {
    expectLine("failed\tfile\tit is a folder; name the file of the module with --module", 3,
               {"--module", "."});
}

TEST_F(DoctorTest, TextOfTheLoaderIsShown) {
    writeFile("no.so", "no library");
    const std::string text = host::SharedLibrary(absolute("no.so")).problem();
    ASSERT_NE("", text);
    expectLine("failed\tloader\t" + text +
                   "; check that the module is whole and that the libraries it needs are installed",
               3, {"--module", "no.so"});
}

TEST_F(DoctorTest, OtherPlatformIsFound) {
    std::string header(
        "\x7F"
        "ELF\2\1\1\0\0\0\0\0\0\0\0\0\3\0\xB7\0",
        20);
    header[18] = 3;
    header[4] = 1;
    writeFile("other.so", header);
    const std::string own(host::ownPlatform());
    expectLine("warning\tplatform\tLinux x86; this command is for " + own, 3,
               {"--module", "other.so"});
    expectLine("failed\tloader\tit is built for Linux x86, and this program for " + own +
                   "; name the module for " + own + " with --module",
               3, {"--module", "other.so"});
}

TEST_F(DoctorTest, LibraryWithoutFunctionsIsFound) {
    expectLine(
        "failed\tfunctions\tit has no function C_GetFunctionList; name a PKCS #11 module with "
        "--module",
        3, {"--module", module.noListPath()});
}

TEST_F(DoctorTest, StartThatFailsIsShownWithItsResult) {
    module->fail("C_Initialize", 0, CKR_GENERAL_ERROR);
    expectLine(
        "failed\tC_Initialize\tit returned CKR_GENERAL_ERROR (0x00000005); check the module's own "
        "settings, and whether its service runs",
        3);
    EXPECT_EQ(1u, module.count("C_Initialize"));
    EXPECT_EQ(0u, module.count("C_Finalize"));
}

TEST_F(DoctorTest, InformationThatFailsIsAWarning) {
    module->fail("C_GetInfo", 0, CKR_FUNCTION_FAILED);
    expectLine(
        "warning\tversion\tC_GetInfo returned CKR_FUNCTION_FAILED (0x00000006); the module does "
        "not say which one it is",
        0);
}

TEST_F(DoctorTest, MissingConfigurationIsFound) {
    const std::string output = zrkey({"doctor", "--config", "none.xml"}).output;
    EXPECT_TRUE(has(output, "failed\tconfiguration\tNo such file or directory; check --config"))
        << output;
    EXPECT_EQ(3, zrkey({"doctor", "--config", "none.xml"}).exitCode);
    EXPECT_FALSE(has(output, "\tLoad\t"));
    expectLine("ok\tconfiguration\tthe built-in configuration", 0);
}

TEST_F(DoctorTest, InvalidConfigurationIsFound) {
    writeFile("config.xml", "<other/>");
    const std::string output = zrkey({"doctor"}).output;
    EXPECT_TRUE(has(output, "failed\tLoad\tthe module was loaded, but config.xml in \"")) << output;
    EXPECT_EQ(3, zrkey({"doctor"}).exitCode);
}

TEST_F(DoctorTest, MissingReaderAndTokenAreFound) {
    module->settings().slotCount = 0;
    module->settings().slotCountWhenListed = 0;
    expectLine(
        "failed\ttokens\tthe module finds no reader; connect a reader or a token, and check that "
        "its service runs",
        4);
    module->settings().emptySlotCount = 1;
    expectLine("failed\ttokens\tno reader contains a token; connect a token", 4);
    expectLine("ok\treaders\t1: Recording Reader", 4);
}

TEST_F(DoctorTest, SlotsThatCannotBeListedAreFound) {
    module->fail("C_GetSlotList", 0, CKR_GENERAL_ERROR);
    const std::string output = zrkey({"doctor"}).output;
    EXPECT_TRUE(
        has(output, "failed\ttokens\tthe module's C_GetSlotList returned CKR_GENERAL_ERROR"))
        << output;
}

TEST_F(DoctorTest, BlankTokenIsFound) {
    setText(module->settings().tokenInfo.label, "");
    setText(module->settings().tokenInfo.serialNumber, "");
    expectLine(
        "warning\ttoken 0\tit is not initialised; initialise it with the tool of its maker, if it "
        "is to be used",
        4);
}

TEST_F(DoctorTest, TokenThatCannotBeReadIsFound) {
    module->fail("C_GetTokenInfo", 0, CKR_FUNCTION_FAILED);
    const std::string output = zrkey({"doctor"}).output;
    EXPECT_TRUE(
        has(output, "warning\ttoken 0\tthe module's C_GetTokenInfo returned CKR_FUNCTION_FAILED"))
        << output;
    EXPECT_EQ(4, zrkey({"doctor"}).exitCode);
}

TEST_F(DoctorTest, StateOfThePinIsShown) {
    const std::string token = "token 0\t\"Label\", serial number Serial: ";
    CK_FLAGS& flags = module->settings().tokenInfo.flags;
    expectLine("ok\t" + token + "its user PIN is not locked", 0);
    flags = kTokenInitialised;
    expectLine("warning\t" + token + "the user PIN is not initialised; the issuer has to set it",
               5);
    flags = kTokenInitialised | kUserPinSet | kFewTries;
    const std::string sure = "; make sure of the PIN before it is used";
    expectLine("warning\t" + token + "a wrong user PIN was tried" + sure, 0);
    flags |= kLastTry;
    expectLine("warning\t" + token + "one try is left for the user PIN" + sure, 0);
    flags |= kLocked;
    expectLine("warning\t" + token + "the user PIN is locked; ask the issuer to unlock it", 8);
}

TEST_F(DoctorTest, JsonContainsEveryCheck) {
    module->settings().tokenInfo.flags |= kLocked;
    const CommandResult result = zrkey({"doctor", "--json"});
    EXPECT_EQ(8, result.exitCode);
    EXPECT_EQ(0u, result.output.find(R"({"schema":1,"command":"doctor","result":{"name":"S_OK",)"))
        << result.output;
    EXPECT_TRUE(has(result.output, R"("login":false,"exit":8,"checks":[{"check":"command",)"
                                   R"("status":"ok","found":")" ZRKEY_VERSION R"("})"))
        << result.output;
    EXPECT_TRUE(has(result.output, R"("advice":"ask the issuer to unlock it"})")) << result.output;
    EXPECT_TRUE(has(zrkey({"doctor", "--module", module.path(), "--json"}).output, "\"exit\":8"));
}

}  // namespace
}  // namespace zr::test
