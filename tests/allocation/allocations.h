// Counts the allocations of the code under test, fails one of them by number, and tells what was
// not given back.
//
//     for (std::size_t number = 1;; ++number) {
//         Allocations allocations(Allocations::ofLibrary, number);
//         ...                                    // run the scenario
//         if (!allocations.hasFailed()) break;   // it makes fewer
//         EXPECT_EQ(0u, allocations.live());
//     }
#pragma once

#include <cstddef>

namespace zr::test {

class Allocations {
public:
    enum Whose {
        ofLibrary,    ///< made on behalf of the library, not of the test or of a Cryptoki module
        ofEverything  ///< the test's too: the code under test is linked into it
    };

    /// @param failing  the allocation that fails, from 1; 0 for none.
    explicit Allocations(Whose whose, std::size_t failing = 0);
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;
    ~Allocations() { stop(); }

    /// Counts no longer; what is given back is still noted.
    void stop();
    std::size_t made() const;
    bool hasFailed() const;
    /// Blocks that were counted and not given back.
    std::size_t live() const;
};

/// The one number of ZRKEY_TEST_ALLOCATION to which a run is limited; 0 for all.
std::size_t onlyAllocation();

}  // namespace zr::test
