// The file expected_answers.txt: what every member answers to bad input.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zr::test {

enum class FrontEnd { kScripts, kAutomation };

struct ExpectedParameter {
    std::string kind;  ///< "integer"
    std::string good;  ///< a value's name; empty: the good one of the kind
    bool isOptional = false;

    bool operator==(const ExpectedParameter&) const = default;
};

struct ExpectedMember {
    std::string good;
    std::vector<ExpectedParameter> parameters;
    bool isForClosed = false;      ///< answers on a closed object too
    bool isList = false;           ///< returns a list
    std::set<std::size_t> unused;  ///< positions from 1 among all parameters
    /// Values that the member refuses, each with the position from 1 among the used parameters.
    std::set<std::pair<std::size_t, std::string>> refused;
};

class ExpectedAnswers {
public:
    ExpectedAnswers();

    /// "Token.VerifyPIN" and what is expected of it.
    const std::map<std::string, ExpectedMember>& members() const { return m_members; }
    /// The names of the values.
    std::vector<std::string> values() const;
    /// "ok", "type", "range" or "value".
    std::string answer(const std::string& value, const std::string& kind,
                       FrontEnd frontEnd = FrontEnd::kScripts) const;

private:
    void readLine(const std::vector<std::string>& words);

    std::map<std::string, ExpectedMember> m_members;
    /// As in the file.
    std::map<std::string, std::map<std::string, std::string>> m_answers;
};

}  // namespace zr::test
