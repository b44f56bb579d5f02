// A log line with logging off and on.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "model/log_scope.h"

namespace {

void logOff(benchmark::State& state) {
    const ZRLog log;
    for (auto _ : state) {
        LogScope(&log, "Load").end();
    }
}
BENCHMARK(logOff);

void logOn(benchmark::State& state) {
    ZRLog log;
    const std::string path = "zrkey_bench.log";
    log.SetFilePath(path.c_str());
    for (auto _ : state) {
        LogScope(&log, "Load").end();
    }
    std::remove(path.c_str());
}
BENCHMARK(logOn);

}  // namespace
