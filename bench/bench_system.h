// What the benchmarks need of the system.
#pragma once

#include <string>

namespace zr::bench {

/// The processor time of this process.
double currentSeconds();

/// How long a turn takes: long beside a step of the clock, and short beside what else happens on the
/// machine. A disturbance then falls on few rounds, and the median does not see it.
extern const double kSecondsOfTurn;

/// Sets an environment variable, for the modules of this process too.
void setVariable(const std::string& name, const std::string& value);

/// Goes back to the beginning of standard output, a file, so that it does not grow for ever.
void rewindConsole();

}  // namespace zr::bench
