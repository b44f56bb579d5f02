// A Cryptoki module whose every answer comes from the input of a fuzzer: results, lengths, counts,
// handles, bytes. It never writes outside the caller's buffers, but may report any number.
#pragma once

#include <string>

#include "tests/fuzz/input.h"

namespace zr::fuzz {

/// Sets the input for the module's answers; borrowed. Null: every call succeeds, and there is one
/// token with an object of each kind.
void answerFrom(Input* input);

/// The module's path relative to the current directory, as Load expects it.
const std::string& modulePath();

}  // namespace zr::fuzz
