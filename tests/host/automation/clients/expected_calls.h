// What a call of an Automation client is expected to answer, by tests/host/objects/expected_answers.txt.
#pragma once

#include <string>
#include <vector>

#include "tests/host/automation/automation_client.h"
#include "tests/host/objects/expected_answers.h"

namespace zr::test {

using Words = std::vector<std::string>;

std::string joined(const Words& words);

struct WantedAnswer {
    std::string kind;          ///< "ok", "type", "range", "value" or "count"
    std::size_t argument = 0;  ///< the one at fault, from 1
};

/// The calls of one member.
class ExpectedCall {
public:
    /// @param answers  borrowed.
    /// @param name     "Token.VerifyPIN".
    ExpectedCall(const ExpectedAnswers& answers, const std::string& name);

    const std::string& className() const { return m_className; }
    const std::string& name() const { return m_name; }
    /// The number of parameters that are used.
    std::size_t used() const { return m_member.parameters.size(); }
    bool isForClosed() const { return m_member.isForClosed; }
    /// The names of good values for a call with the used parameters, or with all of them.
    Words goodNames(bool isWhole) const;
    /// @param isEmpty  whether "nothing" is a value, as a variable that was never set; otherwise it is
    ///                 an argument that is not given.
    WantedAnswer answerTo(const Words& names, bool isEmpty) const;
    bool isWanted(const WantedAnswer& wanted, const Words& names, const Answer& answer) const;
    /// Whether a success disturbs the next calls.
    bool changesObjects() const;

private:
    bool isNeeded(std::size_t index) const;
    bool endsWithout(const Words& given) const;
    WantedAnswer answerOfValues(const Words& names, bool isWhole) const;
    bool isWantedSuccess(const Words& names, const Answer& answer) const;
    bool isOurException(const Answer& answer) const;

    const ExpectedAnswers& m_answers;
    const ExpectedMember& m_member;
    std::string m_className;
    std::string m_name;
};

}  // namespace zr::test
