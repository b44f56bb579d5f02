// The cases: every fault of one Cryptoki call in a session.
#pragma once

#include <string>
#include <vector>

#include "tests/faults/step.h"

namespace zr::test {

struct FaultCase {
    enum Kind { kInCall, kMissingEntry, kListFails, kListIsNull };
    bool isSearchExclusive;  ///< the module allows one search per session
    Kind kind;
    RecordingFault fault;  ///< for kInCall; kListFails uses its result only
    std::string function;  ///< for kMissingEntry
    std::string description;
};

/// The cases of a module that allows one search per session, or that replaces an open search;
/// always in the same order.
/// @param calls  of the run without a fault.
std::vector<FaultCase> makeFaultCases(const std::vector<MadeCall>& calls, bool isSearchExclusive);

/// Prepares the module for a case.
void applyFault(const FaultCase& fault, RunContext* context);

}  // namespace zr::test
