// The names that a line of a script can go on with.
#include "host/script/line_completion.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "host/script/engine_text.h"
#include "host/script/late_bound/bound_object.h"
#include "host/script/late_bound/member_names.h"

namespace zr::host {
namespace {

struct Search {
    std::string_view chain;  ///< "provider.Op": names and dots
    std::set<std::string> names;
};

bool isNamePart(char byte) {
    return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '_' || byte == '$' ||
           static_cast<unsigned char>(byte) >= 0x80;
}

bool isName(std::string_view text) {
    return !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) == 0 &&
           std::all_of(text.begin(), text.end(), isNamePart);
}

/// The names with dots at the end of a line. Not behind a value that only running code would give:
/// "call().Get" ends with ".Get".
std::string_view chainAtEnd(std::string_view line) {
    std::size_t begin = line.size();
    while (begin > 0 && (isNamePart(line[begin - 1]) || line[begin - 1] == '.')) {
        --begin;
    }
    return line.substr(begin);
}

void addIfTyped(Search& search, std::string_view typed, std::string_view name) {
    if (isName(name) && name.starts_with(typed)) {
        search.names.emplace(name);
    }
}

/// Adds the members that the library's object on top of the stack knows.
void addMembers(duk_context* script, Search& search, std::string_view typed) {
    const auto addKnown = [&](const char* name) {
        if (duk_has_prop_string(script, -1, name)) {
            addIfTyped(search, typed, name);
        }
    };
    if (lateBoundAt(script, -1)) {
        std::for_each(std::begin(kProviderMembers), std::end(kProviderMembers), addKnown);
        std::for_each(std::begin(kTokenMembers), std::end(kTokenMembers), addKnown);
    }
}

/// Adds the names of the properties of the value on top of the stack, own and inherited.
void addProperties(duk_context* script, Search& search, std::string_view typed) {
    duk_enum(script, -1, DUK_ENUM_INCLUDE_NONENUMERABLE);
    while (duk_next(script, -1, 0) != 0) {
        if (isText(script, -1)) {
            addIfTyped(search, typed, viewOf(utf8At(script, -1)));
        }
        duk_pop(script);
    }
    duk_pop(script);
}

/// Finds the names that the chain can end with.
duk_ret_t findNames(duk_context* script, void* data) {
    Search& search = *static_cast<Search*>(data);
    std::string_view rest = search.chain;
    duk_push_global_object(script);
    for (std::size_t dot = rest.find('.'); dot != std::string_view::npos; dot = rest.find('.')) {
        const std::string_view name = rest.substr(0, dot);
        rest.remove_prefix(dot + 1);
        if (!isName(name)) {
            return 0;
        }
        pushText(script, name);
        duk_get_prop(script, -2);
        if (duk_is_null_or_undefined(script, -1)) {
            return 0;
        }
        duk_to_object(script, -1);
    }
    addMembers(script, search, rest);
    addProperties(script, search, rest);
    return 0;
}

}  // namespace

LineCompletion completeLine(duk_context* script, std::string_view line) {
    Search search = {chainAtEnd(line), {}};
    duk_safe_call(script, findNames, &search, 0, 1);
    duk_pop(script);
    const std::size_t dot = search.chain.rfind('.');
    const std::size_t typed =
        dot == std::string_view::npos ? search.chain.size() : search.chain.size() - dot - 1;
    return {typed, {search.names.begin(), search.names.end()}};
}

}  // namespace zr::host
