// The command line of zrkey as a process: its streams and exit codes.
#include "tests/host/child_command.h"

namespace zr::test {
namespace {

using CommandLineTest = ChildCommandTest;

TEST_F(CommandLineTest, VersionIsPrinted) {
    const CommandResult result = zrkey({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "zrkey " ZRKEY_VERSION "\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(CommandLineTest, UnexpectedWordIsRefusedAndNotRepeated) {
    // It may be a PIN.
    const CommandResult result = zrkey({"login", "97531"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrkey: argument 2 is not expected; usage: zrkey login [OPTIONS]; zrkey help login "
              "shows more\n");
}

TEST_F(CommandLineTest, MissingWorkFolderPrintsItsErrorAndExitsWith3) {
    const CommandResult result = zrkey({"list", "--workdir", "missing", "--module", "any"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrkey: cannot change to the folder \"missing\": No such file or directory; check "
              "--workdir, the folder that contains config.xml\n");
}

}  // namespace
}  // namespace zr::test
