// Counts the allocations of the code under test, fails one of them by number, and reports what was
// not freed.
//
//     for (std::size_t number = 1;; ++number) {
//         Allocations allocations(Allocations::kOfLibrary, number);
//         ...                                    // run the scenario
//         if (!allocations.hasFailed()) break;   // fewer allocations than that
//         EXPECT_EQ(0u, allocations.live());
//     }
#pragma once

#include <cstddef>

namespace zr::test {

class Allocations {
public:
    enum Whose {
        kOfLibrary,    ///< made on behalf of the library, not of the test or of a Cryptoki module
        kOfEverything  ///< also of the test: the code under test is linked into it
    };

    /// @param failing  the allocation that fails, from 1; 0 for none.
    explicit Allocations(Whose whose, std::size_t failing = 0);
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;
    ~Allocations() { stop(); }

    /// Stops counting; frees are still recorded.
    void stop();
    std::size_t made() const;
    bool hasFailed() const;
    /// Blocks that were counted and not freed.
    std::size_t live() const;
};

/// The only number to run, from ZRKEY_TEST_ALLOCATION; 0 for all.
std::size_t onlyAllocation();

}  // namespace zr::test
