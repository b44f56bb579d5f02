// zrkey with unusual descriptors, folders and settings of the module at its start. On Linux only,
// where the shell can close descriptors and the module sees the environment.
#include "tests/host/command_token_test.h"

namespace zr::test {
namespace {

class SurroundingsTest : public CommandTokenTest {
protected:
    void SetUp() override {
        CommandTokenTest::SetUp();
        setEnvironment("ZRKEY", ZRKEY_COMMAND);
    }
    void TearDown() override {
        setEnvironment("ZRKEY", "");
        CommandTokenTest::TearDown();
    }
};

TEST_F(SurroundingsTest, DiagnosticsWithoutStandardErrorDoNotReachTheOutput) {
    writeFile("script.js", "new TokenProvider().Unload(); print('done');");
    EXPECT_NE("", shell("\"$ZRKEY\" run --late-bound -v script.js").errors);
    expectOutput(shell("(\"$ZRKEY\" run --late-bound -v script.js 2>&-)"), "done\n");
}

TEST_F(SurroundingsTest, ClosedOutputIsAFailure) {
    expectFailure(shell("(\"$ZRKEY\" list >&-)"), 1,
                  "cannot write to standard output: Bad file descriptor");
}

TEST_F(SurroundingsTest, SignatureOnAFullDiskIsAFailure) {
    writeFile("letter.txt", "letter");
    expectFailure(
        zrkeyLoggedIn({"sign", "--cert", "container1", "-i", "letter.txt", "-o", "/dev/full"}), 1,
        "cannot write to \"/dev/full\": No space left on device");
}

TEST_F(SurroundingsTest, ClosedInputIsAFailure) {
    expectFailure(shell("(\"$ZRKEY\" login --pin - <&-)"), 2,
                  "cannot read the PIN from standard input: Bad file descriptor");
}

TEST_F(SurroundingsTest, DescriptorOpenedByTheCommandIsNotAPinSource) {
    writeFile("both.txt", "1234\n");
    expectFailure(shell("(\"$ZRKEY\" login --pin fd:3 3<&- 4<&- 5<&- 1<>both.txt)"), 2,
                  "cannot read the PIN from descriptor 3: Bad file descriptor");
    EXPECT_EQ(0, shell("\"$ZRKEY\" login --pin fd:3 3<both.txt").exitCode);
}

TEST_F(SurroundingsTest, EndlessPinIsRefused) {
    expectFailure(shell("timeout 60 \"$ZRKEY\" login --pin file:/dev/zero"), 2,
                  "longer than 127 bytes");
}

TEST_F(SurroundingsTest, PipeThatNobodyReadsIsAFailure) {
    // The reader is gone before the command writes.
    const CommandResult result = shell("((sleep 0.5; \"$ZRKEY\" list; echo $? > code.txt) | true)");
    EXPECT_EQ("1\n", readFile("code.txt"));
    EXPECT_EQ(
        "zrkey: cannot write to standard output: Broken pipe; the work is done, but its result "
        "is not written; check free space and permissions\n",
        result.errors);
    writeFile("script.js", "for (;;) { print('line'); }");
    shell("((timeout 30 \"$ZRKEY\" run script.js; echo $? > code.txt) | head -n 1)");
    EXPECT_EQ("1\n", readFile("code.txt"));
}

TEST_F(SurroundingsTest, LastTryWithoutATerminalIsNotUsed) {
    setEnvironment("ZRKEY_MODULE", ZR_INSTANT_MODULE);
    setEnvironment("ZRKEY_INSTANT_FLAGS", "0x20000");
    expectFailure(zrkeyLoggedIn({"login"}), 2,
                  "cannot use the last try for the user PIN of \"Instant\": there is no terminal "
                  "to ask; make sure of the PIN, then give --last-try");
    EXPECT_EQ(0, zrkeyLoggedIn({"login", "--last-try"}).exitCode);
    setEnvironment("ZRKEY_INSTANT_FLAGS", "");
}

TEST_F(SurroundingsTest, RemovedCurrentFolderIsAFailureInTextAndJson) {
    const std::string go = "mkdir gone && cd gone && rmdir ../gone && (\"$ZRKEY\" list --json";
    const CommandResult result = shell("(" + go + "))");
    EXPECT_EQ(3, result.exitCode);
    EXPECT_EQ(0u, result.output.find("{\"schema\":1,\"command\":\"list\",\"failure\":{\"exit\":3,"
                                     "\"asked\":\"find the current folder\""))
        << result.output;
    EXPECT_EQ(
        0u, result.errors.find("zrkey: cannot find the current folder: No such file or directory"))
        << result.errors;
    setEnvironment("TEST_FOLDER", std::filesystem::current_path().string());
    EXPECT_EQ(0, shell("(" + go + " --workdir \"$TEST_FOLDER\"))").exitCode);
}

TEST_F(SurroundingsTest, ParentFolderOfALinkInAModulePathIsThatOfItsTarget) {
    std::filesystem::create_directories("real/inner");
    std::filesystem::create_directory_symlink("real/inner", "link");
    std::filesystem::create_symlink(fromEnvironment("ZRKEY_TEST_MODULE"), "real/module.so");
    EXPECT_EQ(0, zrkey({"list", "--module", "link/../module.so"}).exitCode);
    std::filesystem::rename("real/module.so", "module.so");
    expectFailure(zrkey({"list", "--module", "link/../module.so"}), 3, "No such file or directory");
}

TEST_F(SurroundingsTest, ModulePathThatIsNotUtf8IsNamed) {
    std::filesystem::create_symlink(fromEnvironment("ZRKEY_TEST_MODULE"), "module\xFF.so");
    expectFailure(zrkey({"list", "--module", "module\xFF.so"}), 3, "its path is not valid UTF-8");
}

/// Through Wine the module would not see the changed variable.
TEST_F(SurroundingsTest, ModuleThatDoesNotStartIsNamedWithItsResult) {
    const std::string before = fromEnvironment("SOFTHSM2_CONF");
    setEnvironment("SOFTHSM2_CONF", "missing.conf");
    expectFailure(zrkey({"list"}), 3, "its C_Initialize returned CKR_GENERAL_ERROR (0x00000005)");
    setEnvironment("SOFTHSM2_CONF", before);
}

TEST_F(SurroundingsTest, ModuleOfP11KitIsFoundAndUsed) {
    const std::string module = fromEnvironment("ZRKEY_TEST_MODULE");
    setEnvironment("ZRKEY_MODULE", "");
    std::filesystem::create_directories("user/pkcs11/modules");
    writeFile("user/pkcs11/modules/a-token.module", "module: " + module);
    const CommandResult result = zrkey({"list"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_NE(std::string::npos, result.output.find("0\tZRKey Test\t")) << result.output;
    EXPECT_EQ("zrkey: using the module \"" + module + "\" of p11-kit, the only one with a token\n",
              result.errors);
}

}  // namespace
}  // namespace zr::test
