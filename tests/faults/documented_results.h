// What an operation answers when one of its Cryptoki calls fails, on a token that is in order.
#pragma once

#include <string>
#include <vector>

#include "tests/faults/step.h"

namespace zr::test {

/// @return nothing when the answer of the step in which the fault of a run fell is the documented
///         one; else what is wrong with it.
std::string checkDocumentedResult(const RunContext& context);

/// The documented results that no call of a run stands for: "OpenFile by C_Login".
std::vector<std::string> resultsWithoutCall(const std::vector<MadeCall>& calls);

}  // namespace zr::test
