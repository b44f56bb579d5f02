// Each operation many times.
#include <algorithm>
#include <memory>

#include "tests/soak/held_objects.h"
#include "tests/soak/scale.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

constexpr long kWarmUp = 200;
constexpr long kCallsPerConsole = 5000;

/// What DeleteFile keeps at least: if it kept nothing, docs/habits.md would be wrong.
constexpr long long kSmallestBlock = 16;

void repeat(const Operation& operation, HeldObjects* objects, long count) {
    for (long i = 0; i < count; ++i) {
        require(operation.expected, operation.call(*objects), operation.name);
        if (i % kCallsPerConsole == 0) {
            forgetConsoleLines();
        }
    }
}

/// Whether memory and descriptors are as after the warm-up, but for what is kept by contract.
bool isAsExpected(const Operation& operation, long count, const ProcessUse& before,
                  const ProcessUse& after) {
    const long long growth = heapGrowth(before, after);
    const auto kept = static_cast<long long>(operation.keptBytes) * count;
    const long long least = operation.keptBytes > 0 ? kSmallestBlock * count : growth;
    return growth >= least && growth <= kept + static_cast<long long>(kAllowedHeapBytes) &&
           after.residentKiB - before.residentKiB <= kAllowedResidentKiB + 2 * kept / 1024 &&
           after.descriptors <= before.descriptors;
}

bool checkOperation(std::FILE* report, const Operation& operation, HeldObjects* objects,
                    long count) {
    repeat(operation, objects, std::min(kWarmUp, count));
    const ProcessUse before = processUse();
    repeat(operation, objects, count);
    const ProcessUse after = processUse();
    const bool isFine = isAsExpected(operation, count, before, after);
    if (!isFine || count >= 100000 || operation.keptBytes > 0) {
        std::fprintf(report,
                     "%-34s heap %+.3f bytes a call, resident %+ld KiB, descriptors %+d%s\n",
                     operation.name.c_str(),
                     static_cast<double>(heapGrowth(before, after)) / static_cast<double>(count),
                     after.residentKiB - before.residentKiB, after.descriptors - before.descriptors,
                     isFine ? "" : ": GREW");
    }
    return isFine;
}

}  // namespace

bool checkOperations(std::FILE* report, long count) {
    // The objects that DeleteFile keeps stay in memory, so that it gets its own.
    const std::string module = relativePath(ZR_INSTANT_MODULE);
    const ModuleCopy other("other");
    HeldObjects objects(module);
    objects.otherModule = other.path();
    long operations = 0;
    long grown = 0;
    for (const Operation& operation : allOperations()) {
        std::unique_ptr<HeldObjects> own;
        if (operation.keptBytes > 0) {
            own = std::make_unique<HeldObjects>(module);
        }
        grown += checkOperation(report, operation, own ? own.get() : &objects, count) ? 0 : 1;
        ++operations;
    }
    std::fprintf(report, "%ld operations, %ld times each: %ld of them grew\n", operations, count,
                 grown);
    return grown == 0;
}

}  // namespace zr::test
