// Parses JSON strictly.
#include "host/web/strict_json.h"

#include <set>
#include <vector>

#include "host/output/printable.h"

namespace zr::host {
namespace {

using Json = nlohmann::json;

struct JsonProblem {
    std::string text;
};

/// Sees each value before it is stored; throws a JsonProblem.
class Guard {
public:
    explicit Guard(int depth) : m_depth(depth) {}

    bool operator()(int depth, Json::parse_event_t event, Json& value) {
        using Event = Json::parse_event_t;
        if (event == Event::object_start || event == Event::array_start) {
            if (depth >= m_depth) {
                throw JsonProblem{"is nested too deeply"};
            }
            m_keys.emplace_back();
        } else if (event == Event::object_end || event == Event::array_end) {
            m_keys.pop_back();
        } else if (event == Event::key &&
                   !m_keys.back().insert(value.get_ref<const std::string&>()).second) {
            throw JsonProblem{std::string("has the key ")
                                  .append(inQuotes(value.get<std::string>()))
                                  .append(" twice")};
        }
        return true;
    }

private:
    int m_depth;
    std::vector<std::set<std::string>> m_keys;
};

}  // namespace

std::optional<Json> parseStrictJson(std::string_view text, int depth, std::string& problem) {
    problem.clear();
    // The parser takes a NUL for the end, and skips a byte order mark.
    if (text.find('\0') != std::string_view::npos || text.starts_with("\xEF\xBB\xBF")) {
        problem = "is not JSON: it contains a NUL or begins with a byte order mark";
        return std::nullopt;
    }
    Guard guard(depth);
    try {
        return Json::parse(text.begin(), text.end(),
                           [&guard](int at, Json::parse_event_t event, Json& value) {
                               return guard(at, event, value);
                           });
    } catch (const JsonProblem& found) {
        problem = found.text;
    } catch (const Json::parse_error& error) {
        problem = "is not JSON at byte " + std::to_string(error.byte);
    } catch (const Json::exception&) {
        problem = "has a number that is too large";
    }
    return std::nullopt;
}

}  // namespace zr::host
