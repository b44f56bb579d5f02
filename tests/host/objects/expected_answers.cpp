// The file expected_answers.txt.
#include "tests/host/objects/expected_answers.h"

#include <fstream>
#include <iterator>
#include <sstream>

namespace zr::test {
namespace {

ExpectedParameter readParameter(std::string word) {
    ExpectedParameter parameter;
    parameter.isOptional = word.ends_with('?');
    if (parameter.isOptional) {
        word.pop_back();
    }
    const std::size_t equals = word.find('=');
    parameter.kind = word.substr(0, equals);
    parameter.good = equals == std::string::npos ? "" : word.substr(equals + 1);
    return parameter;
}

}  // namespace

ExpectedAnswers::ExpectedAnswers() {
    std::ifstream file(ZRKEY_EXPECTED_ANSWERS);
    for (std::string line; std::getline(file, line);) {
        std::istringstream text(line);
        const std::vector<std::string> words{std::istream_iterator<std::string>(text), {}};
        if (!words.empty() && !words[0].starts_with('#')) {
            readLine(words);
        }
    }
}

void ExpectedAnswers::readLine(const std::vector<std::string>& words) {
    std::string member = words[1];
    member.append(".").append(words[2]);
    if (words[0] == "member") {
        m_members[member].good = words[3];
        for (std::size_t i = 4; i < words.size(); ++i) {
            m_members[member].parameters.push_back(readParameter(words[i]));
        }
    } else if (words[0] == "unused") {
        for (std::size_t i = 3; i < words.size(); ++i) {
            m_members.at(member).unused.insert(std::stoul(words[i]));
        }
    } else if (words[0] == "closed") {
        for (std::size_t i = 2; i < words.size(); ++i) {
            m_members.at(words[1] + "." + words[i]).isForClosed = true;
        }
    } else if (words[0] == "list") {
        m_members.at(member).isList = true;
    } else if (words[0] == "answer") {
        const char* const kinds[] = {"integer",     "text",        "bytes",
                                     "certificate", "textOrIndex", "anyText"};
        for (std::size_t i = 0; i < std::size(kinds); ++i) {
            m_answers[words[1]][kinds[i]] = words.at(i + 2);
        }
    } else if (words[0] == "value") {
        for (std::size_t i = 4; i < words.size(); ++i) {
            m_members.at(member).refused.insert({std::stoul(words[3]), words[i]});
        }
    }
}

std::string ExpectedAnswers::answer(const std::string& value, const std::string& kind,
                                    FrontEnd frontEnd) const {
    const auto found = m_answers.find(value);
    // "pin", "text:MD5" and the like are good ones.
    const std::string both = found == m_answers.end() ? "ok" : found->second.at(kind);
    const std::size_t slash = both.find('/');
    if (slash == std::string::npos) {
        return both;
    }
    return frontEnd == FrontEnd::kScripts ? both.substr(0, slash) : both.substr(slash + 1);
}

std::vector<std::string> ExpectedAnswers::values() const {
    std::vector<std::string> names;
    for (const auto& [name, answers] : m_answers) {
        names.push_back(name);
    }
    return names;
}

}  // namespace zr::test
