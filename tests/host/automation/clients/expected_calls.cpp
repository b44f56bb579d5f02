// What a call of an Automation client is expected to answer.
#include "tests/host/automation/clients/expected_calls.h"

#include <algorithm>
#include <map>

namespace zr::test {
namespace {

const std::map<std::string, std::string> kGood = {{"integer", "zero"},
                                                  {"text", "digits"},
                                                  {"bytes", "bytes"},
                                                  {"certificate", "certificate"},
                                                  {"textOrIndex", "zero"}};

}  // namespace

std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) {
        text.append(text.empty() ? "" : ", ").append(word);
    }
    return text;
}

ExpectedCall::ExpectedCall(const ExpectedAnswers& answers, const std::string& name)
    : m_answers(answers),
      m_member(answers.members().at(name)),
      m_className(name.substr(0, name.find('.'))),
      m_name(name.substr(name.find('.') + 1)) {}

Words ExpectedCall::goodNames(bool isWhole) const {
    Words names;
    std::size_t next = 0;
    const std::size_t count = used() + (isWhole ? m_member.unused.size() : 0);
    for (std::size_t i = 1; i <= count; ++i) {
        if (isWhole && m_member.unused.contains(i)) {
            names.push_back("null");
            continue;
        }
        const ExpectedParameter& parameter = m_member.parameters[next++];
        names.push_back(parameter.good.empty() ? kGood.at(parameter.kind) : parameter.good);
    }
    return names;
}

bool ExpectedCall::isNeeded(std::size_t index) const {
    return index < used() && !m_member.parameters[index].isOptional;
}

/// Whether an argument that is needed is missing at the end of a call that gives all.
bool ExpectedCall::endsWithout(const Words& given) const {
    for (std::size_t i = given.size(); i > 0 && given[i - 1] == "nothing"; --i) {
        if (!m_member.unused.contains(i)) {
            return true;
        }
    }
    return false;
}

WantedAnswer ExpectedCall::answerTo(const Words& names, bool isEmpty) const {
    if (m_member.isList && names == Words{"zero"}) {
        return {"ok"};
    }
    if (names.size() == 1 && (m_name == "tokens" || m_name == "certificates")) {
        return {"ok"};  // an argument of the list's Item
    }
    const std::size_t all = used() + m_member.unused.size();
    Words given = names;
    while (given.size() > all && given.back() == "nothing") {
        given.pop_back();
    }
    const bool isWhole = given.size() > used() && given.size() == all;
    while (!isWhole && !given.empty() && given.back() == "nothing" &&
           !(isEmpty && isNeeded(given.size() - 1))) {
        given.pop_back();
    }
    const auto fewest = static_cast<std::size_t>(
        std::ranges::count(m_member.parameters, false, &ExpectedParameter::isOptional));
    const bool isUsed = given.size() >= fewest && given.size() <= used();
    if ((!isUsed && !isWhole) || (isWhole && !isEmpty && endsWithout(given))) {
        return {"count"};
    }
    return answerOfValues(given, isWhole);
}

WantedAnswer ExpectedCall::answerOfValues(const Words& names, bool isWhole) const {
    WantedAnswer refusal{"ok"};
    std::size_t next = 0;
    for (std::size_t i = 1; i <= names.size(); ++i) {
        if (isWhole && m_member.unused.contains(i)) {
            continue;
        }
        const ExpectedParameter& parameter = m_member.parameters[next++];
        const std::string answer =
            m_answers.answer(names[i - 1], parameter.kind, FrontEnd::kAutomation);
        if (answer != "ok") {
            return {answer, i};
        }
        if (refusal.kind == "ok" && m_member.refused.contains({next, names[i - 1]})) {
            refusal = {"value", i};
        }
    }
    return refusal;
}

bool ExpectedCall::isOurException(const Answer& answer) const {
    return answer.result == DISP_E_EXCEPTION && answer.source == "ZRKey." + m_className &&
           answer.description.starts_with(m_name);
}

bool ExpectedCall::isWanted(const WantedAnswer& wanted, const Words& names,
                            const Answer& answer) const {
    const auto position = static_cast<UINT>(names.size() - wanted.argument);
    if (wanted.kind == "count") {
        return answer.result == DISP_E_BADPARAMCOUNT;
    }
    if (wanted.kind == "type") {
        return answer.result == DISP_E_TYPEMISMATCH && answer.position == position;
    }
    if (wanted.kind == "range") {
        return answer.result == DISP_E_OVERFLOW && answer.position == position;
    }
    if (wanted.kind == "value") {
        const std::string text = m_name + ": argument " + std::to_string(wanted.argument) + " ";
        return isOurException(answer) && answer.code == E_INVALIDARG &&
               answer.description.starts_with(text);
    }
    return isWantedSuccess(names, answer);
}

bool ExpectedCall::isWantedSuccess(const Words& names, const Answer& answer) const {
    if (m_member.good.starts_with("E_")) {
        return isOurException(answer) &&
               answer.code == (m_member.good == "E_NOTIMPL" ? E_NOTIMPL : E_INVALIDARG);
    }
    const bool isGood = names == goodNames(false) || names == goodNames(true);
    if (m_member.good == "true" && isGood) {
        return answer.result == S_OK && shown(answer.value.get()) == "B:true";
    }
    return answer.result == S_OK ||
           (isOurException(answer) && answer.description.starts_with(m_name + " failed"));
}

bool ExpectedCall::changesObjects() const {
    static const Words names = {"Load",       "Unload",     "Close",     "VerifyPIN",
                                "ModifyPIN",  "unblockPIN", "Seek",      "writeFile",
                                "CreateFile", "DeleteFile", "FileExists"};
    return std::ranges::find(names, m_name) != names.end();
}

}  // namespace zr::test
