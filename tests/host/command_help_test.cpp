// The help of every command, to the last character.
#include <sstream>

#include "tests/host/command_test.h"

namespace zr::test {
namespace {

using CommandHelpTest = CommandTest;

/// The words between "$ zrkey " and the end of a line.
std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST_F(CommandHelpTest, EveryPageIsAsItIsKept) {
    const std::string mark = "$ zrkey ";
    std::string pages = readFile(ZRKEY_HELP);
    int count = 0;
    for (std::size_t begin = 0; begin < pages.size(); ++count) {
        ASSERT_EQ(begin, pages.find(mark, begin));
        const std::size_t lineEnd = pages.find('\n', begin);
        const std::size_t end = std::min(pages.find("\n" + mark, lineEnd), pages.size() - 1) + 1;
        const std::string line = pages.substr(begin + mark.size(), lineEnd - begin - mark.size());
        SCOPED_TRACE(line);
        expectOutput(wordsOf(line), pages.substr(lineEnd + 1, end - lineEnd - 1));
        begin = end;
    }
    // Three groups among them.
    EXPECT_EQ(18, count);
}

TEST_F(CommandHelpTest, AGroupNeedsItsCommand) {
    for (const char* group : {"pin", "file", "cert"}) {
        expectUsageError({group}, "A subcommand is required");
    }
    EXPECT_EQ("zrkey " ZRKEY_VERSION "\n", zrkey({"--version"}).output);
}

}  // namespace
}  // namespace zr::test
