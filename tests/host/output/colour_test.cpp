// Colours: only on terminals, and only the name of the command in a failure.
#include "host/output/colour.h"

#include <gtest/gtest.h>

#include "host/system/system.h"
#include "host/system/terminal.h"
#include "tests/support/console_capture.h"

namespace zr::host {
namespace {

TEST(ColourTest, NameAtTheStartOfALineIsRed) {
    EXPECT_EQ("\x1b[31mzrkey:\x1b[0m cannot read\n", withRedName("zrkey: cannot read\n"));
    EXPECT_EQ("cannot zrkey: read\n", withRedName("cannot zrkey: read\n"));
    EXPECT_EQ("", withRedName(""));
}

TEST(ColourTest, FilesAreNotColouredAndNoTerminals) {
    test::ConsoleCapture capture;
    EXPECT_FALSE(usesColour(kStandardError));
    EXPECT_FALSE(isTerminal(kStandardError));
    EXPECT_FALSE(isCapableTerminal(kStandardError));
}

}  // namespace
}  // namespace zr::host
