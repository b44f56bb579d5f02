// The command's own streams, kept apart from the library's output.
#include "host/output/console.h"

#include <gtest/gtest.h>

#include "host/system/system.h"
#include "tests/host/next_descriptor.h"
#include "tests/support/console_capture.h"

namespace zr::test {
namespace {

using host::Console;
using host::Diagnostics;
using host::kStandardError;
using host::kStandardOutput;

/// Writes as the library does.
void writeDiagnostics() {
    std::fputs("line\n", stdout);
    host::writeAll(kStandardError, "error\n");
}

ConsoleCapture::Text textsOf(Diagnostics diagnostics) {
    ConsoleCapture capture;
    {
        Console console(diagnostics);
        writeDiagnostics();
        console.drainDiagnostics();
        EXPECT_EQ(std::error_code(), console.writeOutput("output\n"));
        console.writeError("failure\n");
        std::fputs("rest\n", stdout);
    }
    host::writeAll(kStandardOutput, "after\n");
    host::writeAll(kStandardError, "after\n");
    return capture.stop();
}

TEST(ConsoleTest, DroppedDiagnosticsReachNeitherStream) {
    const ConsoleCapture::Text texts = textsOf(Diagnostics::kDropped);
    EXPECT_EQ("output\nafter\n", texts.out);
    EXPECT_EQ("failure\nafter\n", texts.error);
}

TEST(ConsoleTest, DiagnosticsOnRequestReachStandardErrorOnly) {
    const ConsoleCapture::Text texts = textsOf(Diagnostics::kOnStandardError);
    EXPECT_EQ("output\nafter\n", texts.out);
    EXPECT_EQ("error\nline\nfailure\nrest\nafter\n", texts.error);
}

TEST(ConsoleTest, OutputBufferedBeforehandIsWritten) {
    ConsoleCapture capture;
    std::fputs("before\n", stdout);
    { const Console console(Diagnostics::kDropped); }
    EXPECT_EQ("before\n", capture.stop().out);
}

TEST(ConsoleTest, DestructionClosesEveryDescriptor) {
    const int before = nextDescriptor();
    { const Console console(Diagnostics::kDropped); }
    { const Console console(Diagnostics::kOnStandardError); }
    EXPECT_EQ(before, nextDescriptor());
}

}  // namespace
}  // namespace zr::test
