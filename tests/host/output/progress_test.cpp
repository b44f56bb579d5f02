// The progress line: when it appears, what it says, and that it is erased.
#include "host/output/progress.h"

#include <gtest/gtest.h>

#include <optional>

namespace zr::host {
namespace {

using std::chrono::milliseconds;

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

class ProgressTest : public testing::Test {
protected:
    std::unique_ptr<Progress> start(std::optional<std::uint64_t> total) {
        return std::make_unique<Progress>([this](std::string_view text) { shown.append(text); },
                                          "digest", total, [this] { return now; });
    }
    /// What is shown since the last call.
    std::string takeShown() { return std::exchange(shown, {}); }

    Progress::Clock::time_point now;
    std::string shown;
};

TEST_F(ProgressTest, ShortWorkShowsNothing) {
    auto progress = start(4 * kMebibyte);
    now += milliseconds(999);
    progress->add(4 * kMebibyte);
    progress.reset();
    EXPECT_EQ("", shown);
}

TEST_F(ProgressTest, LongWorkShowsHowFarItIsAndErasesTheLine) {
    auto progress = start(4 * kMebibyte);
    now += milliseconds(1000);
    progress->add(kMebibyte);
    EXPECT_EQ("\rdigest: 1 MiB of 4 MiB (25 %)", takeShown());
    now += milliseconds(200);
    progress->add(2 * kMebibyte);
    EXPECT_EQ("\rdigest: 3 MiB of 4 MiB (75 %)", takeShown());
    progress.reset();
    EXPECT_EQ("\r" + std::string(29, ' ') + "\r", shown);
}

TEST_F(ProgressTest, LineIsNotDrawnMoreThanFiveTimesASecond) {
    auto progress = start(std::nullopt);
    now += milliseconds(1000);
    progress->add(kMebibyte);
    takeShown();
    now += milliseconds(199);
    progress->add(kMebibyte);
    EXPECT_EQ("", takeShown());
    now += milliseconds(1);
    progress->add(kMebibyte);
    EXPECT_EQ("\rdigest: 3 MiB", takeShown());
}

TEST_F(ProgressTest, FileThatGrowsIsNeverMoreThanWhole) {
    auto progress = start(kMebibyte);
    now += milliseconds(1000);
    progress->add(5 * kMebibyte);
    EXPECT_EQ("\rdigest: 5 MiB of 1 MiB (100 %)", takeShown());
}

TEST_F(ProgressTest, EmptyFileIsNoDivisor) {
    auto progress = start(0);
    now += milliseconds(1000);
    progress->add(0);
    EXPECT_EQ("\rdigest: 0 MiB", takeShown());
}

TEST_F(ProgressTest, WithoutATerminalNothingIsShown) {
    Progress progress({}, "digest", std::nullopt, [this] { return now; });
    now += milliseconds(5000);
    progress.add(kMebibyte);
}

}  // namespace
}  // namespace zr::host
