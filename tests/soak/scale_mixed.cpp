// Operations in a random order, on objects that come and go.
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>

#include "tests/soak/held_objects.h"
#include "tests/soak/scale.h"

namespace zr::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kHosts = 8;
constexpr int kStepsPerSample = 5000;
/// One step of this many replaces the objects of a host.
constexpr int kReplaceOneOf = 50;
constexpr int kLinesPerRun = 20;
constexpr long kShownErrors = 10;
constexpr auto kAllowedGrowth = static_cast<long long>(kAllowedHeapBytes);

unsigned int chooseSeed() {
    const char* seed = std::getenv("ZRKEY_SOAK_SEED");
    return seed ? static_cast<unsigned int>(std::strtoul(seed, nullptr, 10))
                : std::random_device()();
}

/// Several hosts in one process, each with a module of its own: an Unload ends every token of its
/// module.
class MixedWork {
public:
    MixedWork(std::FILE* report, unsigned int seed) : m_report(report), m_random(seed) {
        for (const Operation& operation : allOperations()) {
            // Memory is compared, so what keeps some by contract is left out.
            if (operation.keptBytes == 0) {
                m_operations.push_back(operation);
            }
        }
        for (std::size_t i = 0; i < kHosts; ++i) {
            m_modules.emplace_back("host" + std::to_string(i));
            m_otherModules.emplace_back("other" + std::to_string(i));
        }
    }

    /// @return what the process uses after these steps, when all objects are released.
    ProcessUse sample() {
        std::vector<std::unique_ptr<HeldObjects>> hosts(kHosts);
        for (int i = 0; i < kStepsPerSample; ++i) {
            step(&hosts);
        }
        hosts.clear();
        forgetConsoleLines();
        m_steps += kStepsPerSample;
        return processUse();
    }

    long long steps() const { return m_steps; }
    long errors() const { return m_errors; }

private:
    void step(std::vector<std::unique_ptr<HeldObjects>>* hosts) {
        const std::size_t host = m_random() % kHosts;
        std::unique_ptr<HeldObjects>& objects = (*hosts)[host];
        if (!objects || m_random() % kReplaceOneOf == 0) {
            objects.reset();
            objects = std::make_unique<HeldObjects>(m_modules[host].path());
            objects->otherModule = m_otherModules[host].path();
        }
        const Operation& operation = m_operations[m_random() % m_operations.size()];
        try {
            require(operation.expected, operation.call(*objects), operation.name);
        } catch (const std::exception& error) {
            if (++m_errors <= kShownErrors) {
                std::fprintf(m_report, "%s\n", error.what());
            }
        }
    }

    std::FILE* m_report;
    std::mt19937 m_random;
    std::vector<Operation> m_operations;
    std::vector<ModuleCopy> m_modules;
    std::vector<ModuleCopy> m_otherModules;
    long long m_steps = 0;
    long m_errors = 0;
};

}  // namespace

bool checkMixedWork(std::FILE* report, long seconds) {
    const unsigned int seed = chooseSeed();
    std::fprintf(report, "seed %u\n", seed);
    MixedWork work(report, seed);
    work.sample();
    const ProcessUse first = work.sample();
    ProcessUse last = first;
    const auto begin = Clock::now();
    const auto end = begin + std::chrono::seconds(seconds);
    auto nextLine = begin;
    while (Clock::now() < end) {
        last = work.sample();
        if (Clock::now() >= nextLine) {
            nextLine += std::chrono::milliseconds(1000 * seconds) / kLinesPerRun;
            std::fprintf(
                report, "%12lld operations: heap %+lld bytes, resident %+ld KiB, descriptors %+d\n",
                work.steps(), heapGrowth(first, last), last.residentKiB - first.residentKiB,
                last.descriptors - first.descriptors);
        }
    }
    const bool isFlat = heapGrowth(first, last) <= kAllowedGrowth &&
                        last.residentKiB - first.residentKiB <= kAllowedResidentKiB &&
                        last.descriptors <= first.descriptors;
    std::fprintf(report,
                 "%lld operations in %ld seconds, seed %u: heap %+lld bytes, resident %+ld KiB, "
                 "descriptors %+d, %ld errors: %s\n",
                 work.steps(), seconds, seed, heapGrowth(first, last),
                 last.residentKiB - first.residentKiB, last.descriptors - first.descriptors,
                 work.errors(), isFlat ? "flat" : "GREW");
    return isFlat && work.errors() == 0;
}

}  // namespace zr::test
