// One step of the scenario: an operation of the library, compared with the calls it made.
//
//     Step step(context, "GetKeyCount");
//     INT count = 77;
//     const HRESULT hr = provider->GetKeyCount(&count);
//     const RecordingAnswer slots = step.call("C_GetSlotList(1, null)");
//     step.expect(slots.result == CKR_OK ? S_OK : E_FAIL, hr);
//
// The statements after the operation state the expected calls, in order, and the expected result
// for the module's answers.
#pragma once

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/hresult.h"
#include "tests/support/recording/recording.h"

namespace zr::test {

/// A Cryptoki call of a run.
struct MadeCall {
    std::string step;
    unsigned int nthInStep;  ///< of the calls of its function in this step, from 1
    std::string line;
    RecordingAnswer answer;  ///< its bytes are no longer valid

    std::string function() const { return line.substr(0, line.find('(')); }
};

/// The call with the fault of a run, and the result of its step.
struct FaultyCall {
    unsigned int nth = 0;  ///< of all calls, from 1; 0 none
    std::string step;
    std::string function;
    unsigned int nthInStep = 0;
    std::optional<HRESULT> result;  ///< of the step; a Release has none
};

struct StepResult {
    std::string step;
    HRESULT result;
};

/// The state that the steps of one run share.
struct RunContext {
    explicit RunContext(Recording& recording) : module(recording) {}

    Recording& module;
    std::string missing;    ///< the entry point that the module's list lacks
    bool isLoaded = false;  ///< whether calls reach the module
    unsigned int nth = 0;   ///< calls made so far
    FaultyCall faulty;
    bool collects = false;  ///< whether every call is kept
    std::vector<MadeCall> calls;
    std::vector<StepResult> results;
    std::vector<std::string> problems;
};

class Step {
public:
    Step(RunContext& context, const char* name);
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    /// Every call must have been expected, and the step's searches must be closed.
    ~Step();

    /// The next call, which must begin with a text: "C_Login(1, 1, 1234)".
    /// @return the module's answer; a failure where no call can be made.
    RecordingAnswer call(const std::string& line);
    bool isOk(const std::string& line) { return call(line).result == CKR_OK; }

    void expect(HRESULT expected, HRESULT actual);
    template <class T>
    void equal(const char* what, const T& expected, const T& actual) {
        if (!(expected == actual)) {
            std::ostringstream text;
            text << what << " is " << actual << ", expected " << expected;
            problem(text.str());
        }
    }
    void problem(const std::string& text);
    /// The step leaves its search open.
    void leavesSearchOpen() { m_leavesSearchOpen = true; }

private:
    void keepCalls();

    RunContext& m_context;
    std::string m_name;
    std::optional<HRESULT> m_result;
    std::size_t m_next = 0;
    bool m_leavesSearchOpen = false;
};

}  // namespace zr::test
