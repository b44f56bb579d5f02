// One step of the scenario: its calls in order.
#include "tests/faults/step.h"

#include <map>

namespace zr::test {

Step::Step(RunContext& context, const char* name) : m_context(context), m_name(name) {
    m_context.module->clearCalls();
}

Step::~Step() {
    bool isSearching = false;
    for (std::size_t i = 0; i < m_context.module->callCount(); ++i) {
        const std::string line = m_context.module->call(i);
        if (i >= m_next) {
            problem("made one more call, " + line);
        }
        if (line.rfind("C_FindObjectsInit(", 0) == 0) {
            isSearching = isSearching || m_context.module->answer(i).result == CKR_OK;
        } else if (line.rfind("C_FindObjectsFinal(", 0) == 0) {
            isSearching = false;
        }
    }
    const bool isClosedByNobody = m_context.missing == "C_FindObjectsFinal";
    if (isSearching && !m_leavesSearchOpen && !isClosedByNobody) {
        problem("left its search open");
    }
    keepCalls();
}

void Step::keepCalls() {
    const std::size_t count = m_context.module->callCount();
    const unsigned int nth = m_context.faulty.nth;
    const bool isFaulty = nth > m_context.nth && nth <= m_context.nth + count;
    m_context.nth += static_cast<unsigned int>(count);
    if (!isFaulty && !m_context.collects) {
        return;
    }
    std::map<std::string, unsigned int> counts;
    for (std::size_t i = 0; i < count; ++i) {
        MadeCall made = {m_name, 0, m_context.module->call(i), m_context.module->answer(i)};
        made.nthInStep = ++counts[made.function()];
        if (m_context.nth - count + i + 1 == nth) {
            m_context.faulty = {nth, m_name, made.function(), made.nthInStep, m_result};
        }
        if (m_context.collects) {
            m_context.calls.push_back(made);
        }
    }
}

RecordingAnswer Step::call(const std::string& line) {
    RecordingAnswer answer = {};
    if (!m_context.isLoaded) {
        answer.result = CKR_CRYPTOKI_NOT_INITIALIZED;
        return answer;
    }
    if (line.substr(0, line.find('(')) == m_context.missing) {
        answer.result = CKR_FUNCTION_NOT_SUPPORTED;
        return answer;
    }
    const std::string made =
        m_next < m_context.module->callCount() ? m_context.module->call(m_next) : "nothing";
    if (made.rfind(line, 0) != 0) {
        problem("called " + made + ", expected " + line);
        answer.result = CKR_GENERAL_ERROR;
        return answer;
    }
    return m_context.module->answer(m_next++);
}

void Step::expect(HRESULT expected, HRESULT actual) {
    m_result = actual;
    m_context.results.push_back({m_name, actual});
    const testing::AssertionResult result = isResult("", m_name.c_str(), expected, actual);
    if (!result) {
        m_context.problems.emplace_back(result.message());
    }
}

void Step::problem(const std::string& text) {
    m_context.problems.push_back(m_name + " " + text);
}

}  // namespace zr::test
