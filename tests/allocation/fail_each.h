// Repeats code that is linked into the test while each of its allocations fails in turn.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/allocation/allocations.h"

namespace zr::test {

/// @param run  makes the calls; may ask whether an allocation has failed.
inline void failEach(const std::function<void(const Allocations&)>& run) {
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        // The first run also allocates memory that the language libraries keep, as for exceptions.
        run(Allocations(Allocations::kOfEverything, number));
        Allocations allocations(Allocations::kOfEverything, number);
        run(allocations);
        allocations.stop();
        EXPECT_EQ(0u, allocations.live());
        if (!allocations.hasFailed()) {
            EXPECT_LT(1u, number);
            return;
        }
    }
}

}  // namespace zr::test
