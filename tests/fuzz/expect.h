// The oracle of the fuzzers: a false condition ends the process and prints its place and meaning.
#pragma once

#include <string_view>

namespace zr::fuzz {

/// @param meaning  the condition as a sentence, where the place alone does not explain it.
void expect(bool holds, std::string_view meaning = "the library keeps a promise",
            const char* file = __builtin_FILE(), int line = __builtin_LINE());

}  // namespace zr::fuzz
