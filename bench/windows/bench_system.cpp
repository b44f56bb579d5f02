// What the benchmarks need of Windows.
#include "bench/bench_system.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace zr::bench {

// Wine counts processor time in steps of 10 ms.
const double kSecondsOfTurn = 0.2;

double currentSeconds() {
    FILETIME begin;
    FILETIME end;
    FILETIME kernel;
    FILETIME user;
    GetProcessTimes(GetCurrentProcess(), &begin, &end, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) *
               1e-7;
    };
    return seconds(kernel) + seconds(user);
}

void setVariable(const std::string& name, const std::string& value) {
    _putenv_s(name.c_str(), value.c_str());
}

void rewindConsole() {
    std::rewind(stdout);
}

}  // namespace zr::bench
