// Runs the benchmarks. The library writes diagnostics to standard output; they are dropped, and
// the report goes to standard error.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <iostream>

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::ConsoleReporter console;
    console.SetOutputStream(&std::cerr);
    console.SetErrorStream(&std::cerr);
    if (!std::freopen("/dev/null", "w", stdout)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks(&console);
    return 0;
}
