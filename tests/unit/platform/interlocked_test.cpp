// Atomic increment and decrement.
#include <gtest/gtest.h>

#include <thread>

#include "platform/kernel.h"

namespace {

TEST(InterlockedTest, IncrementAndDecrementReturnTheNewValue) {
    LONG value = 0;
    EXPECT_EQ(1, InterlockedIncrement(&value));
    EXPECT_EQ(0, InterlockedDecrement(&value));
    EXPECT_EQ(-1, InterlockedDecrement(&value));
    EXPECT_EQ(-1, value);
}

TEST(InterlockedTest, IncrementsInTwoThreadsAreAllCounted) {
    constexpr LONG kSteps = 20000;
    LONG value = 0;
    const auto steps = [&value] {
        for (LONG i = 0; i < kSteps; ++i) {
            InterlockedIncrement(&value);
        }
    };
    std::thread other(steps);
    steps();
    other.join();
    EXPECT_EQ(2 * kSteps, value);
}

}  // namespace
