// The streams to the browser when the process can open no more files; Linux has a limit for that.
#include "host/browser/own_streams.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace zr::test {
namespace {

/// Only so many more files can be opened.
void limitFiles(int more) {
    // From here on, all numbers are free.
    close_range(3, ~0U, 0);
    const rlim_t most = static_cast<rlim_t>(3) + static_cast<rlim_t>(more);
    const rlimit limit = {most, most};
    setrlimit(RLIMIT_NOFILE, &limit);
}

TEST(OwnStreamsDeathTest, ProcessEndsWithoutAnEmptyInput) {
    const auto take = [](int more) {
        limitFiles(more);
        host::takeStreams();
        _exit(7);
    };
    // The two streams, and the empty input.
    EXPECT_EXIT(take(3), testing::ExitedWithCode(7), "");
    EXPECT_EXIT(take(2), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(take(1), testing::ExitedWithCode(1), "");
}

}  // namespace
}  // namespace zr::test
