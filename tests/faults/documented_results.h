// The results of operations when one of their Cryptoki calls fails, on a working token.
#pragma once

#include <string>
#include <vector>

#include "tests/faults/step.h"

namespace zr::test {

/// @return empty when the step with the fault returned the documented result; else the
///         difference.
std::string checkDocumentedResult(const RunContext& context);

/// The documented results without a call in the run: "OpenFile by C_Login".
std::vector<std::string> resultsWithoutCall(const std::vector<MadeCall>& calls);

}  // namespace zr::test
