// The cases: everything that can go wrong in one Cryptoki call of a run without a fault.
#pragma once

#include <string>
#include <vector>

#include "tests/faults/step.h"

namespace zr::test {

struct FaultCase {
    enum Kind { inCall, missingEntry, listFails, listIsNull };
    bool isSearchExclusive;  ///< the module allows one search a session
    Kind kind;
    RecordingFault fault;  ///< of inCall; listFails has its result alone
    std::string function;  ///< of missingEntry
    std::string description;
};

/// The cases of a module that allows one search a session, or one that allows a new one instead;
/// always in the same order.
/// @param calls  of the run without a fault.
std::vector<FaultCase> makeFaultCases(const std::vector<MadeCall>& calls, bool isSearchExclusive);

/// Makes the module ready for a case.
void applyFault(const FaultCase& fault, RunContext* context);

}  // namespace zr::test
