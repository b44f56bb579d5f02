// A log line, with logging off and on.
#include <sys/time.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "bench/comparison.h"
#include "model/log_scope.h"

namespace zr::bench {
namespace {

/// A line as a host would append it, opening the file each time: other programs may rotate it.
void appendLine(const char* path, const char* operation) {
    std::FILE* file = std::fopen(path, "a");
    timeval now;
    gettimeofday(&now, nullptr);
    std::tm local;
    localtime_r(&now.tv_sec, &local);
    std::fprintf(file, "[%02d:%02d:%02d.%03d] [%s:%u] End\n", local.tm_hour, local.tm_min,
                 local.tm_sec, static_cast<int>(now.tv_usec / 1000), operation,
                 static_cast<unsigned>(__LINE__));
    std::fclose(file);
}

void measureLine(Comparison& comparison) {
    const std::string path = "own.log";
    const std::string floorPath = "floor.log";
    ZRLog log;
    log.SetFilePath(path.c_str());
    const LogScope scope = LogScope::withoutBegin(&log, "Load");
    comparison.measure([&] { scope.end(); }, [&] { appendLine(floorPath.c_str(), "Load"); });
    std::remove(path.c_str());
    std::remove(floorPath.c_str());
}

}  // namespace

void logRows(Bench& bench) {
    bench.row({"log/off", "", Measure::kTime}, [](Comparison& comparison) {
        const ZRLog log;
        const LogScope scope = LogScope::withoutBegin(&log, "Load");
        comparison.measure([&] { scope.end(); });
    });
    bench.row({"log/on", "the same line by fopen, fprintf and fclose"}, measureLine);
}

}  // namespace zr::bench
