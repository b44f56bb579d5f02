// What an operation answers when one of its Cryptoki calls fails, on a token that is in order.
#pragma once

#include <string>

#include "tests/faults/step.h"

namespace zr::test {

/// @return nothing when the answer of the step in which the fault of a run fell is the documented
///         one; else what is wrong with it.
std::string checkDocumentedResult(const RunContext& context);

}  // namespace zr::test
