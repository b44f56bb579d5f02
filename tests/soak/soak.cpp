// soak ROUNDS [WARM_UP]: repeats a full session with a token and compares the process's resources
// after the first WARM_UP rounds (1000) with those at the end. Then measures what DeleteFile
// keeps. Fails when memory grew by more than 64 KiB, or descriptors or sessions grew at all. Without
// a warm-up memory is not compared: checking tools use more and more memory.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tests/soak/process_use.h"
#include "tests/soak/soak_work.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

constexpr long kAllowedGrowthKiB = 64;
constexpr long kRoundsPerLine = 10000;
constexpr int kDeletions = 100;

struct State {
    ProcessUse use;
    CK_ULONG sessions;
};

State afterRounds(SoakWork* work, long rounds) {
    CK_ULONG sessions = 0;
    for (long i = 0; i < rounds; ++i) {
        sessions = work->round();
    }
    return {processUse(), sessions};
}

void print(std::FILE* report, const char* when, const State& state) {
    std::fprintf(report, "%-20s resident %ld KiB, heap %zu bytes, descriptors %d, sessions %lu\n",
                 when, state.use.residentKiB, state.use.heapBytes, state.use.descriptors,
                 static_cast<unsigned long>(state.sessions));
    std::fflush(report);
}

void measureDeleteFile(std::FILE* report, SoakWork* work) {
    const CK_ULONG firstSessions = work->deleteByLibrary();
    const std::size_t first = processUse().heapBytes;
    CK_ULONG sessions = 0;
    for (int i = 0; i < kDeletions; ++i) {
        sessions = work->deleteByLibrary();
    }
    std::fprintf(report, "DeleteFile keeps     %.0f bytes of heap and %.2f sessions each time\n",
                 static_cast<double>(processUse().heapBytes - first) / kDeletions,
                 static_cast<double>(sessions - firstSessions) / kDeletions);
    work->finishDeleting();
}

int run(std::FILE* report, long rounds, long warmUp) {
    const char* module = std::getenv("ZRKEY_TEST_MODULE");
    if (!module) {
        std::fprintf(report, "ZRKEY_TEST_MODULE is not set; run this by scripts/soak\n");
        return 2;
    }
    const TempDir folder;
    folder.writeConfig();
    SoakWork work(module);
    const State first = afterRounds(&work, warmUp);
    print(report, "after the warm-up:", first);
    State last = first;
    for (long done = 0; done < rounds;) {
        const long part = std::min(kRoundsPerLine, rounds - done);
        last = afterRounds(&work, part);
        done += part;
        print(report, ("after " + std::to_string(done) + " more:").c_str(), last);
    }
    measureDeleteFile(report, &work);
    const bool isMemoryFlat =
        warmUp == 0 || last.use.residentKiB - first.use.residentKiB <= kAllowedGrowthKiB;
    const bool isFlat =
        isMemoryFlat && last.use.descriptors <= first.use.descriptors && last.sessions == 0;
    std::fprintf(report, "%ld rounds: %s\n", rounds, isFlat ? "flat" : "GREW");
    return isFlat ? 0 : 1;
}

}  // namespace
}  // namespace zr::test

int main(int argumentCount, char** arguments) {
    const long rounds = argumentCount > 1 ? std::atol(arguments[1]) : 100000;
    const long warmUp = argumentCount > 2 ? std::atol(arguments[2]) : 1000;
    // The library writes its diagnostics to standard output; the report uses the original one.
    std::FILE* report = fdopen(dup(STDOUT_FILENO), "w");
    const int nowhere = open("/dev/null", O_WRONLY);
    if (!report || nowhere < 0) {
        return 2;
    }
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
    int result = 2;
    try {
        result = zr::test::run(report, rounds, warmUp);
    } catch (const std::exception& error) {
        std::fprintf(report, "failed: %s\n", error.what());
    }
    std::fclose(report);
    return result;
}
