// The frame of a command: what its body throws is reported on both streams.
#include "host/commands/command_frame.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "tests/support/console_capture.h"

namespace zr::test {
namespace {

/// Runs a body as the command "list" with --json.
/// @return its standard output.
template <class Body>
std::string outputOf(Body body) {
    host::ReportOptions options;
    options.json = true;
    ConsoleCapture console;
    const int exitCode = host::runCommand("list", options, body);
    const std::string output = console.stop().out;
    EXPECT_EQ(host::kExitFailure, exitCode);
    return output;
}

TEST(CommandFrameTest, ExceptionIsReportedAsAFailureInJson) {
    EXPECT_EQ(
        "{\"schema\":1,\"command\":\"list\",\"failure\":{\"exit\":1,\"asked\":\"finish list\","
        "\"cause\":\"unexpected error: no way\",\"advice\":\"run it again with --verbose\"}}\n",
        outputOf([]() -> host::Report { throw std::runtime_error("no way"); }));
}

TEST(CommandFrameTest, OutOfMemoryIsReportedAsAFailureInJson) {
    EXPECT_EQ(
        "{\"schema\":1,\"command\":\"list\",\"failure\":{\"exit\":1,\"asked\":\"finish list\","
        "\"cause\":\"out of memory\",\"advice\":\"free some memory, or use less data\"}}\n",
        outputOf([]() -> host::Report { throw std::bad_alloc(); }));
}

TEST(CommandFrameTest, NoteIsNotShownWhenQuiet) {
    for (const bool isQuiet : {false, true}) {
        host::ReportOptions options;
        options.quiet = isQuiet;
        ConsoleCapture console;
        const auto body = [] {
            host::Report report;
            report.output = "output\n";
            report.note = "note\n";
            return report;
        };
        EXPECT_EQ(host::kExitOk, host::runCommand("list", options, body));
        const ConsoleCapture::Text text = console.stop();
        EXPECT_EQ("output\n", text.out);
        EXPECT_EQ(isQuiet ? "" : "note\n", text.error);
    }
}

TEST(CommandFrameTest, FailureIsShownWhenQuiet) {
    host::ReportOptions options;
    options.quiet = true;
    ConsoleCapture console;
    EXPECT_EQ(1, host::runCommand("list", options, []() -> host::Report {
                  throw host::commandFailure(1, "list", "cause", "advice");
              }));
    EXPECT_EQ("zrkey: cannot list: cause; advice\n", console.stop().error);
}

}  // namespace
}  // namespace zr::test
