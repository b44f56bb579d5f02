// Many threads, each with a provider, a module, a token and a session of its own.
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/soak/held_objects.h"
#include "tests/soak/scale.h"

namespace zr::test {
namespace {

constexpr int kThreads = 64;
// The blocks that the C library keeps for a thread that ended.
constexpr long long kAllowedForThreads = 64 * 1024;

/// MD5 of "data to sign", by md5sum.
constexpr char kDigest[] = "\xf3\x53\x6b\xe9\xb5\x18\xbe\x69\x09\xa4\x22\xa1\xb3\x9c\x2c\xf3";

void requireBytes(const std::string& expected, const ByteArray& actual, const char* step) {
    if (actual.bytes() != expected) {
        throw std::runtime_error(std::string(step) + ": wrong bytes");
    }
}

/// What a host does with a token, with all results checked.
void doTheJob(const std::string& module) {
    HeldObjects objects(module);
    Variant value;
    require(S_OK, objects.token->EnumContainer(0, value.receive()), "EnumContainer");
    const std::vector<std::string> names = value.toTexts().value();
    Text id;
    require(S_OK, objects.certificate->GetCertID(id.receive()), "GetCertID");
    if (names.size() != 32 || names.front() != "00000001" || names.back() != "00000020" ||
        id.utf8() != names.front()) {
        throw std::runtime_error("wrong names");
    }
    ByteArray bytes;
    require(
        S_OK,
        objects.token->SignData(nullptr, objects.data, objects.certificate.get(), bytes.receive()),
        "SignData");
    requireBytes(std::string(256, '\1'), bytes, "SignData");
    require(S_OK,
            objects.token->VerifyData(objects.data, objects.certificate.get(), nullptr, bytes),
            "VerifyData");
    require(S_OK, objects.token->DigestData(Text("MD5"), objects.data, bytes.receive()),
            "DigestData");
    requireBytes(std::string(kDigest, 16), bytes, "DigestData");
    require(S_OK, objects.file->Read(sizeof(unsigned long), bytes.receive()), "Read");
    requireBytes(std::string(sizeof(unsigned long), '\0'), bytes, "Read");
    require(S_OK,
            invoke(objects.token.get(), idOf(objects.token.get(), "GetLabel"), {}, value.receive()),
            "GetLabel by name");
    if (value.toText() != "Instant") {
        throw std::runtime_error("wrong label");
    }
}

/// Runs the job in all threads at once.
/// @return how many threads failed.
int runRound(std::FILE* report, const std::vector<ModuleCopy>& modules) {
    std::atomic<int> failures{0};
    std::mutex reporting;
    std::vector<std::thread> threads;
    for (const ModuleCopy& module : modules) {
        threads.emplace_back([&failures, &reporting, report, &module] {
            try {
                doTheJob(module.path());
            } catch (const std::exception& error) {
                ++failures;
                const std::lock_guard<std::mutex> lock(reporting);
                std::fprintf(report, "%s: %s\n", module.path().c_str(), error.what());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    forgetConsoleLines();
    return failures;
}

}  // namespace

bool checkThreads(std::FILE* report, long rounds) {
    std::vector<ModuleCopy> modules;
    for (int i = 0; i < kThreads; ++i) {
        modules.emplace_back("instant" + std::to_string(i));
    }
    int failures = runRound(report, modules) + runRound(report, modules);
    const ProcessUse before = processUse();
    for (long i = 0; i < rounds; ++i) {
        failures += runRound(report, modules);
    }
    const ProcessUse after = processUse();
    const bool isFlat =
        heapGrowth(before, after) <= kAllowedForThreads && after.descriptors <= before.descriptors;
    std::fprintf(report,
                 "%d threads, %ld rounds: %d failures; heap %+lld bytes, resident %+ld KiB, "
                 "descriptors %+d: %s\n",
                 kThreads, rounds, failures, heapGrowth(before, after),
                 after.residentKiB - before.residentKiB, after.descriptors - before.descriptors,
                 isFlat ? "flat" : "GREW");
    return failures == 0 && isFlat;
}

}  // namespace zr::test
