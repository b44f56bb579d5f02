// What bash completes. On Linux only, where the shell is.
#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

class BashCompletionTest : public ChildCommandTest {
protected:
    /// What bash offers after words; the last one is being typed.
    static std::string offered(const std::string& words) {
        setEnvironment("ZRKEY", ZRKEY_COMMAND);
        writeFile("complete.sh",
                  "source <(\"$ZRKEY\" --generate bash)\n"
                  "COMP_WORDS=(zrkey " +
                      words +
                      ")\n"
                      "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                      "_zrkey\nprintf '%s\\n' \"${COMPREPLY[@]}\" | LC_ALL=C sort | xargs echo\n");
        const CommandResult result = shell("bash complete.sh");
        setEnvironment("ZRKEY", "");
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.errors);
        return result.output;
    }
};

TEST_F(BashCompletionTest, CommandsAndSwitchesAreOffered) {
    EXPECT_EQ("list login\n", offered("l"));
    EXPECT_EQ("exists\n", offered("file e"));
    EXPECT_EQ("exists\n", offered("help file e"));
    EXPECT_EQ("--index --input\n", offered("sign --in"));
    EXPECT_EQ("--pin\n", offered("--json --module list login --p"));
}

TEST_F(BashCompletionTest, ValuesAreOffered) {
    writeFile("module.so", "");
    std::filesystem::create_directory("modules");
    EXPECT_EQ("env:\n", offered("login --pin e"));
    EXPECT_EQ("raw\n", offered("sign --format r"));
    EXPECT_EQ("module.so modules\n", offered("list --module mod"));
    EXPECT_EQ("modules\n", offered("list --workdir mod"));
    EXPECT_EQ("\n", offered("info --label li"));
    EXPECT_EQ("module.so modules\n", offered("run mod"));
    EXPECT_EQ("module.so modules\n", offered("run script.js mod"));
}

}  // namespace
}  // namespace zr::test
