// What the benchmarks need of Linux.
#include "bench/bench_system.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace zr::bench {

const double kSecondsOfTurn = 0.002;

double currentSeconds() {
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void setVariable(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
}

void rewindConsole() {
    std::rewind(stdout);
}

}  // namespace zr::bench
