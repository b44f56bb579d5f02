// The command, beside other programs that do the same job. Each is started again and again; what is
// counted is the processor time of the processes that ended, and the most memory that one used.
// usage: zrkey_bench_commands RESULTS [--once] [ID...]
//
// In the current folder, token256 is the folder of a token with 256 certificates, and so on.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "bench/bench_token.h"
#include "bench/comparison.h"

namespace zr::bench {
namespace {

double secondsOfChildren() {
    rusage usage = {};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs a program to its end; what it writes is appended to our standard output.
/// @return the most memory that it used, in KiB. Not less than our own: the kernel counts that too.
long run(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    require(posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0,
            "a program does not start");
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage = {};
    require(wait4(child, &status, 0, &usage) == child && status == 0, "a program failed");
    return usage.ru_maxrss;
}

std::string contentsOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Signs 32 bytes with the only key of a token that has many certificates.
void measureSign(Comparison& comparison, const std::string& token) {
    const std::string module = std::filesystem::absolute(realModule()).string();
    setVariable("SOFTHSM2_CONF", std::filesystem::absolute(token + "/softhsm2.conf").string());
    setVariable("PIN", "1234");
    std::ofstream("data.bin", std::ios::binary) << std::string(32, 'x');
    const auto byCommand = [] {
        run({ZRKEY_COMMAND, "sign", "-i", "data.bin", "-o", "own.sig", "--pin", "env:PIN", "--cert",
             "container1"});
    };
    const auto byOther = [&module] {
        // The ID is "container1".
        run({"pkcs11-tool", "--module", module, "--login", "--pin", "env:PIN", "--sign",
             "--mechanism", "SHA1-RSA-PKCS", "--id", "636f6e7461696e657231", "-i", "data.bin", "-o",
             "other.sig"});
    };
    byCommand();
    byOther();
    require(!contentsOf("own.sig").empty() && contentsOf("own.sig") == contentsOf("other.sig"),
            "the signatures differ");
    comparison.measure(byCommand, byOther);
}

std::string bigFile() {
    const std::string path = "256MiB.bin";
    std::ofstream(path).close();
    std::filesystem::resize_file(path, 256UL << 20);
    return path;
}

long digestBigFile() {
    return run({ZRKEY_COMMAND, "digest", "-i", bigFile()});
}

void measureHelp(Comparison& comparison, const char* other) {
    comparison.measure([] { run({ZRKEY_COMMAND, "--help"}); }, [other] { run({other}); });
}

}  // namespace

void allRows(Bench& bench) {
    bench.useClock(secondsOfChildren);
    for (const char* count : {"32", "256", "2048"}) {
        const std::string id = std::string("command/sign-").append(count);
        bench.row({id.c_str(), "pkcs11-tool --sign with the same module, key and data"},
                  [count](Comparison& comparison) {
                      measureSign(comparison, std::string("token").append(count));
                  });
    }
    bench.row({"command/digest", "md5sum with the same file"}, [](Comparison& comparison) {
        const std::string file = bigFile();
        comparison.measure(
            [&] {
                run({ZRKEY_COMMAND, "digest", "-i", file});
            },
            [&] {
                run({"md5sum", file});
            });
    });
    bench.row({"command/digest-memory", "", Measure::kMemory}, [](Comparison& comparison) {
        comparison.store(static_cast<double>(digestBigFile()) / 1024);
    });
    bench.row({"command/help", "a C++ program that writes a line", Measure::kTime},
              [](Comparison& comparison) { measureHelp(comparison, ZRKEY_EMPTY_PROGRAM); });
    bench.row({"command/help-libraries", "the same program, linked to the libraries of zrkey"},
              [](Comparison& comparison) { measureHelp(comparison, ZRKEY_LINKED_PROGRAM); });
}

}  // namespace zr::bench
