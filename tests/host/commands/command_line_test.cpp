// The command line of zrkey as a process: what stands on which stream, and the exit code.
#include "child_command.h"

namespace zr::test {
namespace {

using CommandLineTest = ChildCommandTest;

TEST_F(CommandLineTest, VersionIsPrinted) {
    const CommandResult result = zrkey({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "zrkey " ZRKEY_VERSION "\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(CommandLineTest, AWordTooManyIsNotRepeated) {
    // It may be a PIN.
    const CommandResult result = zrkey({"login", "97531"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zrkey: an argument is not expected; zrkey --help shows the usage\n");
}

TEST_F(CommandLineTest, AFailureHasItsExitCode) {
    const CommandResult result = zrkey({"list", "--workdir", "missing", "--module", "any"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zrkey: cannot change to the folder \"missing\": the system refused it; give "
              "--workdir with the folder of config.xml\n");
}

}  // namespace
}  // namespace zr::test
