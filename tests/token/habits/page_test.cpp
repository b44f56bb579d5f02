// Runs the code that docs/habits.md shows and compares what it prints.
#include "tests/token/habits/page.h"

#include <sstream>

#include "tests/support/fixtures/soft_token.h"

namespace zr::test {

void PrintTo(const PageCode& code, std::ostream* out) {
    *out << code.name;
}

namespace {

class HabitsPage : public LoggedInSoftTokenTest, public testing::WithParamInterface<PageCode> {
protected:
    HabitsPage() { folder.writeConfig("RSA"); }

    /// Without the lines that the runtime writes.
    static std::string withoutDiagnostics(const std::string& text) {
        std::istringstream lines(text);
        std::string kept;
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("[ZComponentImpl::", 0) != 0) {
                kept.append(line).append("\n");
            }
        }
        return kept;
    }
};

TEST_P(HabitsPage, PrintsWhatIsShown) {
    const std::string module = fromEnvironment("ZRKEY_TEST_MODULE");
    ConsoleCapture console;
    GetParam().run(module.c_str(), provider, token);
    const ConsoleCapture::Text printed = console.stop();
    EXPECT_EQ(GetParam().shown, withoutDiagnostics(printed.out));
    EXPECT_EQ("", printed.error);
}

INSTANTIATE_TEST_SUITE_P(Code, HabitsPage, testing::ValuesIn(kPageCode),
                         [](const auto& code) { return code.param.name; });

}  // namespace
}  // namespace zr::test
