// The oracle of the fuzzers: what does not hold ends the process, with its place and what it means.
#pragma once

#include <string_view>

namespace zr::fuzz {

/// @param meaning  what should hold, as a sentence; for where the place alone does not tell.
void expect(bool holds, std::string_view meaning = "the library keeps a promise",
            const char* file = __builtin_FILE(), int line = __builtin_LINE());

}  // namespace zr::fuzz
