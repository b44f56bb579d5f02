// Runs a full session again for each fault of one Cryptoki call.
// ZRKEY_FAULT_CASE=N runs case N only.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>

#include "tests/faults/documented_results.h"
#include "tests/faults/fault_case.h"
#include "tests/faults/scenario.h"
#include "tests/support/console_capture.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

/// The number of the running case, in a file that remains only after a crash.
class CaseMark {
public:
    explicit CaseMark(std::filesystem::path path)
        : m_path(std::move(path)), m_file(std::fopen(m_path.string().c_str(), "w")) {}
    CaseMark(const CaseMark&) = delete;
    CaseMark& operator=(const CaseMark&) = delete;
    ~CaseMark() {
        if (m_file) {
            std::fclose(m_file);
        }
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    void set(std::size_t number) {
        if (m_file) {
            std::rewind(m_file);
            std::fprintf(m_file, "%zu\n", number);
            std::fflush(m_file);
        }
    }

private:
    std::filesystem::path m_path;
    std::FILE* m_file;
};

class FaultTest : public testing::Test {
protected:
    FaultTest() {
        folder.writeConfig();
        ConsoleCapture console;
        factory = getFactory();
        path = module.path();
    }

    /// @param fault  null: none.
    /// @return the tokens that were kept.
    unsigned int run(RunContext* context, const FaultCase* fault) {
        Scenario scenario(*context, factory.get(), path);
        scenario.run();
        if (fault && fault->kind == FaultCase::kInCall && !module->wasFaultHit()) {
            context->problems.emplace_back("the fault was not met");
        }
        if (fault && fault->fault.kind == RecordingFault::kFailure) {
            const std::string problem = checkDocumentedResult(*context);
            if (!problem.empty()) {
                context->problems.push_back(problem);
            }
        }
        return scenario.keptTokens();
    }

    /// A run without a fault; its calls and results are in the context.
    RunContext cleanRun(bool isSearchExclusive) {
        fillModule(&module);
        module->settings().isSearchExclusive = isSearchExclusive;
        RunContext context(module);
        context.collects = true;
        EXPECT_EQ(1u, run(&context, nullptr)) << "one DeleteFile keeps one token";
        EXPECT_EQ(std::vector<std::string>{}, context.problems);
        return context;
    }

    std::vector<FaultCase> allCases() {
        std::vector<FaultCase> cases = makeFaultCases(cleanRun(true).calls, true);
        for (FaultCase& more : makeFaultCases(cleanRun(false).calls, false)) {
            cases.push_back(std::move(more));
        }
        return cases;
    }

    /// @return the problems, one per line.
    std::string runCase(const FaultCase& fault) {
        std::string text;
        fillModule(&module);
        const std::size_t before = allocatedBytes();
        std::size_t kept = 0;
        {
            RunContext context(module);
            applyFault(fault, &context);
            kept = run(&context, &fault) * m_keptBytes;
            for (const std::string& problem : context.problems) {
                text += "    " + problem + "\n";
            }
        }
        fillModule(&module);
        const std::size_t after = allocatedBytes();
        if (text.empty() && after != before + kept) {
            text = "    keeps " + std::to_string(after - before) + " bytes, expected " +
                   std::to_string(kept) + "\n";
        }
        return text;
    }

    /// The memory that DeleteFile keeps in a run without a fault, where memory is counted. The
    /// first run is not counted: it allocates memory that all runs share.
    void measureKeptBytes() {
        for (int i = 0; i < 2; ++i) {
            fillModule(&module);
            const std::size_t before = allocatedBytes();
            {
                RunContext context(module);
                run(&context, nullptr);
            }
            fillModule(&module);
            m_keptBytes = allocatedBytes() - before;
        }
    }

    // Before the folder, which changes the current directory.
    const std::filesystem::path start = std::filesystem::current_path();
    TempDir folder;
    Recording module;
    ComRef<IClassFactory> factory;
    std::string path;

private:
    std::size_t m_keptBytes = 0;
};

TEST_F(FaultTest, RunWithoutAFaultFailsInTheExpectedStepsOnly) {
    std::vector<std::string> failed;
    for (const StepResult& step : cleanRun(true).results) {
        if (FAILED(step.result)) {
            failed.push_back(step.step);
        }
    }
    EXPECT_EQ(
        (std::vector<std::string>{"FileExists", "Read", "Flush after Close", "OpenFile of none",
                                  "GetPubKeyData", "VerifyData of a wrong signature"}),
        failed);
}

TEST_F(FaultTest, RunWithoutAFaultReachesEveryDocumentedResult) {
    EXPECT_EQ(std::vector<std::string>{}, resultsWithoutCall(cleanRun(true).calls));
}

/// The cases in parts of equal size, so that all cores have work.
constexpr int kParts = 8;

class FaultPartTest : public FaultTest, public testing::WithParamInterface<int> {};

/// The number of the one case that is wanted; nothing when all are.
std::optional<std::size_t> wantedCase() {
    const char* const wanted = std::getenv("ZRKEY_FAULT_CASE");
    if (!wanted) {
        return std::nullopt;
    }
    std::istringstream text(wanted);
    std::size_t number = 0;
    EXPECT_TRUE(text >> number && text.eof()) << "no case " << wanted;
    return number;
}

TEST_P(FaultPartTest, RunWithEachFaultReturnsTheExpectedResults) {
    const std::vector<FaultCase> cases = allCases();
    measureKeptBytes();
    const std::optional<std::size_t> wanted = wantedCase();
    ASSERT_TRUE(!wanted || *wanted < cases.size()) << "no case " << *wanted;
    CaseMark mark(start / ("fault_test_" + std::to_string(GetParam()) + ".case"));
    std::size_t run = 0;
    std::size_t failed = 0;
    for (std::size_t number = GetParam(); number < cases.size(); number += kParts) {
        if (wanted && number != *wanted) {
            continue;
        }
        ++run;
        mark.set(number);
        const std::string problems = runCase(cases[number]);
        if (!problems.empty()) {
            ++failed;
            ADD_FAILURE() << "case " << number << ": " << cases[number].description << "\n"
                          << problems;
        }
    }
    std::printf("%zu of %zu cases, %zu failed\n", run, cases.size(), failed);
    EXPECT_GT(cases.size(), 4000u);
}

INSTANTIATE_TEST_SUITE_P(Part, FaultPartTest, testing::Range(0, kParts));

}  // namespace
}  // namespace zr::test
