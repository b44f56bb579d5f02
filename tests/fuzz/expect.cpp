// The oracle of the fuzzers.
#include "tests/fuzz/expect.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace zr::fuzz {
namespace {

// Copied before the fuzzer starts: the code under test may redirect standard error.
const int s_error = dup(STDERR_FILENO);

}  // namespace

void expect(bool holds, std::string_view meaning, const char* file, int line) {
    if (!holds) {
        dprintf(s_error, "%s:%d: %.*s\n", file, line, static_cast<int>(meaning.size()),
                meaning.data());
        std::abort();
    }
}

}  // namespace zr::fuzz
