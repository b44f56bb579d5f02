// The frame of a command: what its body throws is reported, on each stream in its form.
#include "command_frame.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "tests/support/console_capture.h"

namespace zr::test {
namespace {

/// Runs a body as the command "list" with --json.
/// @return what stands on standard output.
template <typename Body>
std::string outputOf(Body body) {
    host::ReportOptions options;
    options.json = true;
    ConsoleCapture console;
    const int exitCode = host::runCommand("list", options, body);
    const std::string output = console.stop().out;
    EXPECT_EQ(host::kExitFailure, exitCode);
    return output;
}

TEST(CommandFrameTest, AnExceptionIsAFailureWithItsObject) {
    EXPECT_EQ(
        "{\"schema\":1,\"command\":\"list\",\"failure\":{\"exit\":1,\"asked\":\"finish list\","
        "\"cause\":\"no way\",\"advice\":\"nothing is known of how to mend it\"}}\n",
        outputOf([]() -> host::Result { throw std::runtime_error("no way"); }));
}

TEST(CommandFrameTest, LackOfMemoryIsAFailureWithItsObject) {
    EXPECT_EQ(
        "{\"schema\":1,\"command\":\"list\",\"failure\":{\"exit\":1,\"asked\":\"finish list\","
        "\"cause\":\"there is not enough memory\",\"advice\":\"free some, or ask for less\"}}\n",
        outputOf([]() -> host::Result { throw std::bad_alloc(); }));
}

}  // namespace
}  // namespace zr::test
