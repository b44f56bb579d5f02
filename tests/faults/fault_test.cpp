// Every call fails once: a whole session is run again for each thing that one Cryptoki call can do
// wrong. ZRKEY_FAULT_CASE=N runs the case of that number alone.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/faults/documented_results.h"
#include "tests/faults/fault_case.h"
#include "tests/faults/scenario.h"
#include "tests/support/console_capture.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

/// The number of the case that runs, in a file that only a crash leaves behind.
class CaseMark {
public:
    CaseMark() : m_file(std::fopen(m_path.string().c_str(), "w")) {}
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
    std::filesystem::path m_path = std::filesystem::absolute("fault_test.case");
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
    ~FaultTest() override { factory->Release(); }

    /// @param fault  null: none.
    /// @return the tokens that were kept.
    unsigned int run(RunContext* context, const FaultCase* fault) {
        Scenario scenario(*context, factory, path);
        scenario.run();
        if (fault && fault->kind == FaultCase::inCall && !module->wasFaultHit()) {
            context->problems.emplace_back("the fault was not met");
        }
        if (fault && fault->fault.kind == RecordingFault::failure) {
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

    /// @return the problems, one a line.
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

    /// What a run without a fault keeps for its one DeleteFile, where memory is counted. The first
    /// run is not counted: it makes what stays for all.
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

    // Before the folder: it stands where the test was started.
    CaseMark mark;
    TempDir folder;
    Recording module;
    IClassFactory* factory = nullptr;
    std::string path;

private:
    std::size_t m_keptBytes = 0;
};

TEST_F(FaultTest, ARunWithoutAFaultFailsWhereItIsMeantTo) {
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

TEST_F(FaultTest, EveryDocumentedResultIsMet) {
    EXPECT_EQ(std::vector<std::string>{}, resultsWithoutCall(cleanRun(true).calls));
}

TEST_F(FaultTest, EveryCallFailsOnce) {
    const std::vector<FaultCase> cases = allCases();
    measureKeptBytes();
    const char* const wanted = std::getenv("ZRKEY_FAULT_CASE");
    std::size_t first = 0;
    std::size_t end = cases.size();
    if (wanted) {
        std::istringstream text(wanted);
        ASSERT_TRUE(text >> first && text.eof() && first < end) << "no case " << wanted;
        end = first + 1;
    }
    std::size_t failed = 0;
    for (std::size_t number = first; number < end; ++number) {
        mark.set(number);
        const std::string problems = runCase(cases[number]);
        if (!problems.empty()) {
            ++failed;
            ADD_FAILURE() << "case " << number << ": " << cases[number].description << "\n"
                          << problems;
        }
    }
    std::printf("%zu of %zu cases, %zu failed\n", end - first, cases.size(), failed);
    EXPECT_GT(cases.size(), 4000u);
}

}  // namespace
}  // namespace zr::test
