// Diagnostics: what reaches the standard streams.
#include "runtime/diagnostics.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/console_capture.h"

namespace zr::test {
namespace {

TEST(DiagnosticsTest, TextIsWrittenAsItIs) {
    ConsoleCapture console;
    zr::consoleOut("100 %s %% %n\n");
    zr::consoleOut("");
    zr::consoleError("%d\n");
    const ConsoleCapture::Text text = console.stop();
    EXPECT_EQ("100 %s %% %n\n", text.out);
    EXPECT_EQ("%d\n", text.error);
}

TEST(DiagnosticsTest, FormattedTextOfAnyLengthIsWrittenWhole) {
    for (const std::size_t length : {0, 2046, 2047, 2048, 2049, 100000}) {
        const std::string word(length, 'w');
        ConsoleCapture console;
        zr::consoleOutFormat("%s", word.c_str());
        zr::consoleErrorFormat("%s%d", word.c_str(), 7);
        const ConsoleCapture::Text text = console.stop();
        EXPECT_EQ(word, text.out);
        EXPECT_EQ(word + "7", text.error);
    }
}

TEST(DiagnosticsTest, BothKindsOfTextKeepTheirOrder) {
    ConsoleCapture console;
    zr::consoleOut("one\n");
    zr::consoleOutFormat("%s\n", "two");
    zr::consoleOut("three\n");
    EXPECT_EQ("one\ntwo\nthree\n", console.stop().out);
}

}  // namespace
}  // namespace zr::test
