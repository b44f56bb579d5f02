// zrkey trace: its words.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

using TraceCommandTest = CommandTest;

TEST_F(TraceCommandTest, CommandIsNeeded) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"trace"}, std::vector<std::string>{"trace", "--"}}) {
        const CommandResult result = zrkey(words);
        EXPECT_EQ(2, result.exitCode);
        EXPECT_EQ(
            "zrkey: COMMAND is required; usage: zrkey trace [OPTIONS] -- COMMAND [OPTION...]; "
            "zrkey help "
            "trace shows more\n",
            result.errors);
    }
}

TEST_F(TraceCommandTest, OptionsBeforeTheCommandAreRefused) {
    const CommandResult result = zrkey({"trace", "--json", "list"});
    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ(0u, result.errors.find("zrkey: unknown option --json")) << result.errors;
}

}  // namespace
}  // namespace zr::test
