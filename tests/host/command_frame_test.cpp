// The frame of a command: what its body throws is reported, on each stream in its form.
#include "command_frame.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace zr::test {
namespace {

/// Runs a body as the command "list" with --json.
/// @return what stands on standard output.
template <typename Body>
std::string outputOf(Body body) {
    host::ReportOptions options;
    options.json = true;
    testing::internal::CaptureStdout();
    EXPECT_EQ(host::kExitFailure, host::runCommand("list", options, body));
    return testing::internal::GetCapturedStdout();
}

TEST(CommandFrameTest, AnExceptionIsAFailureWithItsObject) {
    EXPECT_EQ(
        "{\"schema\":1,\"command\":\"list\",\"failure\":{\"exit\":1,\"asked\":\"finish list\","
        "\"cause\":\"no way\",\"advice\":\"nothing is known of how to mend it\"}}\n",
        outputOf([]() -> host::Result { throw std::runtime_error("no way"); }));
}

TEST(CommandFrameTest, LackOfMemoryIsAFailureWithItsObject) {
    EXPECT_NE(std::string::npos, outputOf([]() -> host::Result {
                                     throw std::bad_alloc();
                                 }).find("\"cause\":\"there is not enough memory\""));
}

}  // namespace
}  // namespace zr::test
