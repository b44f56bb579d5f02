// Which argument of a call belongs to which parameter of a member.
#include "host/automation/argument_places.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "host/automation/call_failure.h"
#include "host/automation/variants.h"

namespace zr::automation {
namespace {

using host::Member;
using host::Parameter;
using host::ParameterKind;
using host::Value;

/// One argument and where it is; null: left out.
struct Place {
    const VARIANT* argument = nullptr;
    UINT position = 0;
};
using Places = std::vector<Place>;

/// The names of the model are ASCII; the C library's tolower depends on the client's locale.
char toLower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The parameters by their numbers.
std::vector<const Parameter*> numberedParameters(const Member& member) {
    std::vector<const Parameter*> parameters;
    for (const Parameter& parameter : member.parameters) {
        parameters.push_back(&parameter);
    }
    std::ranges::stable_partition(parameters, [](const Parameter* parameter) {
        return parameter->kind != ParameterKind::kUnused;
    });
    return parameters;
}

/// The arguments without a name, in the order in which they are written.
Places positionalArguments(const DISPPARAMS& arguments) {
    Places places;
    for (UINT i = arguments.cArgs; i > arguments.cNamedArgs; --i) {
        places.push_back({&arguments.rgvarg[i - 1], i - 1});
    }
    return places;
}

/// The arguments of one call, by the number of their parameter.
class Placement {
public:
    Placement(const Member& member, const DISPPARAMS& arguments)
        : m_parameters(member.parameters),
          m_numbered(numberedParameters(member)),
          m_used(member.usedParameters().size()),
          m_count(arguments.cArgs),
          m_places(m_numbered.size()) {
        if (arguments.cNamedArgs > 0) {
            placePositional(positionalArguments(arguments), countNamed(arguments));
        } else {
            placeAll(positionalArguments(arguments));
        }
        for (UINT i = 0; i < arguments.cNamedArgs; ++i) {
            placeNamed(arguments.rgdispidNamedArgs[i], {&arguments.rgvarg[i], i});
        }
        if (arguments.cNamedArgs > 0) {
            requireAll();
        }
    }

    /// Those of the parameters that are used; of all parameters, in the library's order, when the call
    /// gives all: a failure then states the place of an argument in the call.
    void read(std::vector<Value>& values) const {
        std::size_t next = 0;
        for (const Parameter& parameter : m_parameters) {
            if (parameter.kind != ParameterKind::kUnused) {
                values.push_back(valueOf(parameter, m_places[next++]));
            } else if (m_isWhole) {
                values.push_back(host::Null());
            }
        }
    }

private:
    /// The named arguments whose parameter is used.
    std::size_t countNamed(const DISPPARAMS& arguments) const {
        const std::span<const DISPID> ids(arguments.rgdispidNamedArgs, arguments.cNamedArgs);
        return static_cast<std::size_t>(std::ranges::count_if(
            ids, [this](DISPID id) { return id >= 0 && static_cast<std::size_t>(id) < m_used; }));
    }

    /// Places the arguments of a call that names none.
    void placeAll(Places given) {
        while (given.size() > m_numbered.size() && isMissing(*given.back().argument)) {
            given.pop_back();
        }
        // A call that gives all parameters still counts as such when the last arguments are
        // missing.
        const bool isWhole = given.size() > m_used && given.size() == m_numbered.size();
        while (!isWhole && !given.empty() && isLeftOut(given)) {
            given.pop_back();
        }
        placePositional(given, 0);
        if (m_isWhole) {
            requireEnd(given);
        }
    }

    /// Whether the last argument is left out. A variable of a script that was never set is a wrong
    /// value where an argument is needed.
    bool isLeftOut(const Places& given) const {
        const std::size_t index = given.size() - 1;
        const VARIANT& argument = *given.back().argument;
        const bool isNeeded = index < m_used && !m_numbered[index]->isOptional;
        return isNeeded ? isNotGiven(argument) : isMissing(argument);
    }

    /// When all parameters are given, a missing needed argument at the end is a wrong count.
    void requireEnd(const Places& given) const {
        for (std::size_t i = given.size(); i > 0 && isNotGiven(*given[i - 1].argument); --i) {
            const Parameter& parameter = m_parameters[i - 1];
            if (parameter.kind != ParameterKind::kUnused && !parameter.isOptional) {
                throw WrongArgument{DISP_E_BADPARAMCOUNT, std::nullopt, {}};
            }
        }
    }

    /// A call gives either all parameters or none of those that are not used.
    void placePositional(const Places& given, std::size_t namedCount) {
        const std::size_t count = given.size() + namedCount;
        m_isWhole = count > m_used && count == m_numbered.size();
        if (!m_isWhole && count > m_used) {
            throw WrongArgument{DISP_E_BADPARAMCOUNT, std::nullopt, {}};
        }
        for (std::size_t i = 0; i < given.size(); ++i) {
            const auto whole = std::ranges::find(m_numbered, &m_parameters[i]);
            m_places[m_isWhole ? static_cast<std::size_t>(whole - m_numbered.begin()) : i] =
                given[i];
        }
    }

    void placeNamed(DISPID id, const Place& place) {
        // A negative number becomes an index that is too large.
        const auto index = static_cast<std::size_t>(id);
        if (index >= m_places.size() || m_places[index].argument) {
            // No such parameter, or one that was given before.
            throw WrongArgument{DISP_E_PARAMNOTFOUND, place.position, {}};
        }
        m_places[index] = place;
    }

    void requireAll() const {
        for (std::size_t i = 0; i < m_used; ++i) {
            const VARIANT* argument = m_places[i].argument;
            if (!m_numbered[i]->isOptional && (!argument || isNotGiven(*argument))) {
                throw WrongArgument{DISP_E_PARAMNOTOPTIONAL, std::nullopt, {}};
            }
        }
    }

    Value valueOf(const Parameter& parameter, const Place& place) const {
        if (!place.argument || (parameter.isOptional && isMissing(*place.argument))) {
            return host::Nothing();
        }
        try {
            return toValue(*place.argument, parameter.kind);
        } catch (const WrongValue& error) {
            std::string text = "argument ";
            text.append(std::to_string(m_count - place.position)).append(" ");
            throw WrongArgument{error.result, place.position, text.append(error.problem)};
        }
    }

    const std::vector<Parameter>& m_parameters;
    std::vector<const Parameter*> m_numbered;  ///< those that are used come first
    std::size_t m_used;
    UINT m_count;            ///< of the arguments
    bool m_isWhole = false;  ///< whether all parameters are given
    Places m_places;         ///< of m_numbered
};

}  // namespace

bool isSameName(std::string_view first, std::string_view second) {
    return std::ranges::equal(first, second, {}, toLower, toLower);
}

DISPID idOfParameter(const Member& member, std::string_view name) {
    const std::vector<const Parameter*> parameters = numberedParameters(member);
    const auto found = std::ranges::find_if(
        parameters, [&](const Parameter* parameter) { return isSameName(parameter->name, name); });
    return found == parameters.end() ? DISPID_UNKNOWN
                                     : static_cast<DISPID>(found - parameters.begin());
}

void readArguments(const Member& member, const DISPPARAMS& arguments, std::vector<Value>& values) {
    Placement(member, arguments).read(values);
}

}  // namespace zr::automation
