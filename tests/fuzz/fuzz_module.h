// A Cryptoki module whose every answer comes from the input of a fuzzer: results, lengths, counts,
// handles, bytes. It never writes past what it was given room for, and tells what it likes.
#pragma once

#include <string>

#include "tests/fuzz/input.h"

namespace zr::fuzz {

/// Sets what the module answers from now on; borrowed. Null: the module answers success, and one
/// token with an object of each kind.
void answerFrom(Input* input);

/// The module's path relative to the current directory, as the library wants it.
const std::string& modulePath();

}  // namespace zr::fuzz
